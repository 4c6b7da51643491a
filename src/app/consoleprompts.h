#pragma once

#include "prompts/prompts.h"

// Prompts for a run without a person at the screen (TESSALWICK_PROMPTS=console):
// each message and balloon is written to standard error as one line and the
// first button is taken as the answer; the folder picker and the captcha are
// closed without an answer.
class ConsolePrompts : public Prompts
{
public:
    Answer messageBox(const QString &text, Icon icon, Buttons buttons,
                      const QString &title) override;
    void balloon(int iconKind, const QString &text, const QString &title,
                 int milliseconds) override;
    QString browseForFolder(const QString &title, const QString &startFolder) override;
    void copyToClipboard(const QString &text) override;
    bool openExternal(const QString &target) override;
    std::optional<QString> askCaptcha(const QString &pictureFile) override;
};
