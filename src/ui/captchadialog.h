#pragma once

#include "ui/skindialog.h"

#include <optional>

class QLabel;
class QLineEdit;
class SkinButton;

// The captcha question: shows the picture a site sent and takes the user's
// reading of it. A frameless panel in the main window's look, with a title
// strip of its own (drag it to move the dialog; its button closes without an
// answer). Proceed hands over the box's text, even an empty one; Enter in the
// box does the same, but only when the box holds something. Closing in any
// other way gives no answer.
class CaptchaDialog : public SkinDialog
{
    Q_OBJECT
public:
    explicit CaptchaDialog(const QString &pictureFile, QWidget *parent = nullptr);

    // What Proceed handed over; nothing when the dialog was closed otherwise.
    std::optional<QString> answer() const { return m_answer; }

    // Shows the dialog modally over `parent` and gives its answer.
    static std::optional<QString> ask(const QString &pictureFile, QWidget *parent);

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void proceed();

    QString m_pictureFile;
    QLabel *m_picture = nullptr;
    QLineEdit *m_text = nullptr;
    std::optional<QString> m_answer;
};
