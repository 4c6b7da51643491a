// How the program ends when a queue runs out with the power-off box ticked.
// (The close refused while anything downloads: tst_mainwindow.)
#include "app/appcore.h"
#include "app/power.h"
#include "datatable.h"
#include "sandbox.h"
#include "standin.h"

#include <QtTest>

namespace {

// Whether the power-off box is ticked, whether another site has a row
// downloading; the power-off requests made.
using Shutdowns = Table<bool, bool, QStringList>;

// Records each request and whether the list was on disk by then.
struct RecordingPower : Power
{
    QString listPath;
    QStringList calls;
    void shutdownWindows(int mode) override
    {
        calls << QString("%1 %2").arg(mode).arg(QFile::exists(listPath) ? "saved" : "unsaved");
    }
};

} // namespace

class TestExit : public QObject
{
    Q_OBJECT
private slots:
    void checkShutdown_data()
    {
        const Shutdowns row;
        row("ticked, two sites running", true, true, {"8 saved"});
        // The last transfer of all never powers off.
        row("ticked, one site running", true, false, {});
        row("clear, two sites running", false, true, {});
    }
    void checkShutdown()
    {
        const auto [ticked, otherSiteRunning, calls] = Shutdowns::fetch();
        Sandbox sandbox;
        AppCore core(nullptr);
        RecordingPower power;
        power.listPath = sandbox.path("LinkList.lq");
        core.setLinkListPath(power.listPath);
        core.setPower(&power);
        core.setShutDown(ticked);
        auto failing = std::make_unique<StandInRecipe>();
        failing->mode = StandInRecipe::Mode::Fail;
        core.queues().setRecipe(1, std::move(failing));
        core.list().addLinkToList("http://rapidshare.com/files/1/a.zip", 1, nullptr);
        core.list().addLinkToList("http://hotfile.com/dl/2/b.rar", 7, nullptr);
        if (otherSiteRunning)
            core.list().setField(core.list().childAt(7, 0), Field::IsDownloading, "1");
        QSignalSpy quit(&core, &AppCore::quitRequested);
        core.startSite(1);
        QTRY_COMPARE(core.list().childAt(1, 0)->values[int(Field::Status)], "Connection Error");
        QCOMPARE(power.calls, calls);
        QCOMPARE(quit.size(), calls.size());
    }
};

QTEST_GUILESS_MAIN(TestExit)
#include "tst_exit.moc"
