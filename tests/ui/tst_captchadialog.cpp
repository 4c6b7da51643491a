#include "datatable.h"
#include "fakemegaupload.h"
#include "ui/captchadialog.h"
#include "ui/widgetprompts.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QtTest>

// What the person types into the box ("\r" is Enter, "\x1b" Escape), the
// button pressed then if any, and the answer the question gives ("<none>":
// closed without the button).
using Answers = Table<QString, QString, QString>;

class TestCaptchaDialog : public QObject
{
    Q_OBJECT
private slots:
    void answers_data()
    {
        const Answers row;
        row("typed, then Enter", "x7Q2\r", "", "x7Q2");
        row("Enter on an empty box waits, the button hands it over", "\r", "cmdProceed", "");
        row("closed by its own button", "abc", "cmdClose", "<none>");
        row("closed by Escape", "abc\x1b", "", "<none>");
    }

    void answers()
    {
        const auto [typed, button, answer] = Answers::fetch();
        QTemporaryFile picture; // no suffix: the dialog reads the picture by its content
        QVERIFY(picture.open() && picture.write(FakeMegaUpload::picture()) > 0 && picture.flush());
        QWidget window;
        window.show();
        WidgetPrompts prompts;
        prompts.setWindow(&window);

        // The person acts once the dialog is the active window, its box with
        // the focus and the picture in place; the dialog's own loop runs the
        // timer.
        bool ready = false;
        QTimer::singleShot(0, [&] {
            auto *dialog = window.findChild<CaptchaDialog *>("frmCaptcha");
            QVERIFY(dialog && QTest::qWaitForWindowActive(dialog));
            auto *box = dialog->findChild<QLineEdit *>("txtCaptcha");
            ready =
                box->hasFocus() && !dialog->findChild<QLabel *>("picCaptcha")->pixmap().isNull();
            QTest::keyClicks(box, typed);
            // The dialog is still open just when a button is to end it.
            ready = ready && dialog->isVisible() == !button.isEmpty();
            if (!button.isEmpty())
                dialog->findChild<QAbstractButton *>(button)->click();
        });
        QCOMPARE(prompts.askCaptcha(picture.fileName()).value_or("<none>"), answer);
        QVERIFY(ready);
    }
};

QTEST_MAIN(TestCaptchaDialog)
#include "tst_captchadialog.moc"
