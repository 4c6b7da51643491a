#include "fakemegaupload.h"
#include "ui/captchadialog.h"
#include "ui/widgetprompts.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

class TestCaptchaDialog : public QObject
{
    Q_OBJECT
private slots:
    void answers_data()
    {
        // What the person does, step by step, and the answer the question gives:
        // "type:<text>", "enter", "proceed", "close" or "escape".
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("answer"); // "<none>": closed without the button
        QTest::newRow("typed, then Enter") << QStringList{"type:x7Q2", "enter"} << "x7Q2";
        QTest::newRow("Enter on an empty box does nothing, the button hands over the empty text")
            << QStringList{"enter", "proceed"} << "";
        QTest::newRow("closed by its own button") << QStringList{"type:abc", "close"} << "<none>";
        QTest::newRow("closed by Escape") << QStringList{"type:abc", "escape"} << "<none>";
    }

    void answers()
    {
        QFETCH(QStringList, steps);
        QFETCH(QString, answer);
        QTemporaryDir dir;
        const QString picture = dir.filePath("CAP.gif");
        QFile file(picture);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(FakeMegaUpload::picture()) > 0);
        file.close();
        QWidget window;
        window.show();
        WidgetPrompts prompts;
        prompts.setWindow(&window);

        // The person acts once the dialog shows; timers run on under it.
        int ticks = 0;
        QTimer ticker;
        QObject::connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
        ticker.start(5);
        QStringList seen;
        QTimer::singleShot(0, [&] {
            QTest::qWait(30);
            auto *dialog = window.findChild<CaptchaDialog *>("frmCaptcha");
            QVERIFY(dialog && dialog->isVisible());
            auto *box = dialog->findChild<QLineEdit *>("txtCaptcha");
            seen << (box->hasFocus() ? "focus" : "no focus")
                 << (dialog->findChild<QLabel *>("picCaptcha")->pixmap().isNull() ? "no picture"
                                                                                  : "picture");
            for (const char *label : {"lblCaptchaCode", "Label1", "Label2"})
                seen << dialog->findChild<QLabel *>(label)->text();
            seen << dialog->findChild<QAbstractButton *>("cmdProceed")->text();
            for (const QString &step : steps) {
                if (step.startsWith("type:"))
                    QTest::keyClicks(box, step.mid(5));
                else if (step == "enter")
                    QTest::keyClick(box, Qt::Key_Return);
                else if (step == "escape")
                    QTest::keyClick(box, Qt::Key_Escape);
                else
                    dialog
                        ->findChild<QAbstractButton *>(step == "close" ? "cmdClose" : "cmdProceed")
                        ->click();
            }
        });
        const std::optional<QString> given = prompts.askCaptcha(picture);

        QCOMPARE(given.value_or("<none>"), answer);
        QCOMPARE(seen, (QStringList{"focus", "picture", "Captcha Code Required",
                                    "MegaUpload requires that you enter the above captcha to "
                                    "continue download",
                                    "* Note:- MegaUpload offers each user 3 files to download "
                                    "without captcha until the internet IP changes",
                                    "&Proceed"}));
        QVERIFY(ticks > 0);
    }
};

QTEST_MAIN(TestCaptchaDialog)
#include "tst_captchadialog.moc"
