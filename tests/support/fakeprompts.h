#pragma once

#include "prompts/prompts.h"

#include <QQueue>
#include <QStringList>

#include <functional>

// Records every question the core asks of a person and answers from a queue
// (when it is empty: Yes where the box offers it, Ok otherwise).
class FakePrompts : public Prompts
{
public:
    struct Message
    {
        QString text;
        Icon icon;
        Buttons buttons;
        QString title;
    };

    Answer messageBox(const QString &text, Icon icon, Buttons buttons,
                      const QString &title) override
    {
        messages.append({text, icon, buttons, title});
        // What happens elsewhere while a person reads the message.
        if (whileAsking)
            whileAsking();
        if (!answers.isEmpty())
            return answers.dequeue();
        return buttons >= Buttons::YesNo ? Answer::Yes : Answer::Ok;
    }
    void balloon(int kind, const QString &text, const QString &title, int ms) override
    {
        balloons << QString("balloon %1 %2 %3: %4").arg(kind).arg(ms).arg(title, text);
    }
    QString browseForFolder(const QString &title, const QString &startFolder) override
    {
        folderTitles.append(title + " at " + startFolder);
        return folderAnswers.isEmpty() ? QString() : folderAnswers.takeFirst();
    }
    void copyToClipboard(const QString &text) override { copied.append(text); }
    bool openExternal(const QString &target) override
    {
        opened.append(target);
        return true;
    }
    std::optional<QString> askCaptcha(const QString &pictureFile) override
    {
        captchas.append(pictureFile);
        return captchaAnswers.isEmpty() ? std::nullopt : captchaAnswers.dequeue();
    }

    // One message box as told() writes it.
    static QString message(const QString &text, Icon icon, Buttons buttons, const QString &title)
    {
        return QString("message %1 %2 %3: %4").arg(int(icon)).arg(int(buttons)).arg(title, text);
    }
    // Every message box, then every balloon, each with its look:
    // "message <icon> <buttons> <title>: <text>", "balloon <kind> <ms> <title>: <text>".
    QStringList told() const
    {
        QStringList all;
        for (const Message &m : messages)
            all << message(m.text, m.icon, m.buttons, m.title);
        return all + balloons;
    }

    QList<Message> messages;
    QStringList balloons; // each as told() writes it
    QStringList folderTitles;
    QStringList opened;
    QStringList copied;
    QStringList captchas; // the picture file of each captcha question
    // Answers to the captcha questions; none left: closed without the button.
    QQueue<std::optional<QString>> captchaAnswers;
    QQueue<Answer> answers;
    std::function<void()> whileAsking;
    // The folder picker's answers in turn; none left: cancelled.
    QStringList folderAnswers;
};
