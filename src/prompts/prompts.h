#pragma once

#include <QString>

#include <optional>

// Everything the core asks of a person goes through here: message boxes, tray
// balloons, the folder picker, opening a file or a web page, the captcha. The window
// implements it with widgets; tests record the questions and give answers.
class Prompts
{
public:
    enum class Icon { None, Critical, Question, Exclamation, Information };
    enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
    enum class Answer { Ok, Cancel, Yes, No };

    virtual ~Prompts() = default;

    // A modal message with the program's title "Tessalwick" unless given.
    virtual Answer messageBox(const QString &text, Icon icon, Buttons buttons,
                              const QString &title = QStringLiteral("Tessalwick")) = 0;
    // A tray balloon; kind 1 is the information icon. Where there is no tray
    // it shows nothing.
    virtual void balloon(int iconKind, const QString &text, const QString &title,
                         int milliseconds) = 0;
    // Empty when the user cancelled; the picker opens at `startFolder`.
    virtual QString browseForFolder(const QString &title, const QString &startFolder) = 0;
    // Opens a file, folder or web address with the desktop's handler.
    virtual bool openExternal(const QString &target) = 0;
    // Puts the text on the desktop's clipboard.
    virtual void copyToClipboard(const QString &text) = 0;
    // The captcha question: shows the picture in this file and gives what
    // the person typed, or nothing when the question was closed without its
    // button.
    virtual std::optional<QString> askCaptcha(const QString &pictureFile) = 0;
};
