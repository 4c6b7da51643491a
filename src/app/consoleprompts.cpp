#include "app/consoleprompts.h"

#include <cstdio>

namespace {
void writeLine(const QString &line)
{
    const QByteArray bytes = line.toUtf8();
    std::fprintf(stderr, "%s\n", bytes.constData());
    std::fflush(stderr);
}
} // namespace

Prompts::Answer ConsolePrompts::messageBox(const QString &text, Icon, Buttons buttons,
                                           const QString &title)
{
    writeLine(QStringLiteral("message: [%1] %2").arg(title, text));
    return buttons == Buttons::YesNo || buttons == Buttons::YesNoCancel ? Answer::Yes : Answer::Ok;
}

void ConsolePrompts::balloon(int, const QString &text, const QString &title, int)
{
    writeLine(QStringLiteral("balloon: [%1] %2").arg(title, text));
}

QString ConsolePrompts::browseForFolder(const QString &title, const QString &startFolder)
{
    writeLine(QStringLiteral("folder: [%1] at %2 cancelled").arg(title, startFolder));
    return QString();
}

void ConsolePrompts::copyToClipboard(const QString &text)
{
    writeLine(QStringLiteral("copy: %1").arg(text));
}

bool ConsolePrompts::openExternal(const QString &target)
{
    writeLine(QStringLiteral("open: %1").arg(target));
    return false;
}

std::optional<QString> ConsolePrompts::askCaptcha(const QString &pictureFile)
{
    writeLine(QStringLiteral("captcha: %1 closed").arg(pictureFile));
    return std::nullopt;
}
