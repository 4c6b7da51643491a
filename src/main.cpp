#include "app/appcore.h"
#include "app/consoleprompts.h"
#include "app/power.h"
#include "app/startup.h"
#include "app/termination.h"
#include "system/logicaltimer.h"
#include "ui/mainwindow.h"
#include "ui/widgetprompts.h"

#include <QApplication>
#include <QSessionManager>

#include <memory>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tessalwick"));
    QApplication::setQuitOnLastWindowClosed(false);

    // Without a person at the screen (scripts, tests) every prompt goes to
    // standard error and takes its first answer.
    WidgetPrompts widgetPrompts;
    ConsolePrompts consolePrompts;
    Prompts *prompts = &widgetPrompts;
    if (qEnvironmentVariable("TESSALWICK_PROMPTS") == QLatin1String("console"))
        prompts = &consolePrompts;

    LogicalTimer::applyOverrides(qEnvironmentVariable("TESSALWICK_TIMER_PERIODS"));
    AppCore core(prompts);
    LogindPower power;
    core.setPower(&power);
    // A log-out or a termination request never loses the list. Watched from
    // the start, so a request during start-up is served once the loop runs.
    TerminationWatcher termination;
    QObject::connect(&termination, &TerminationWatcher::terminationRequested, &app, [&] {
        core.saveBeforeForcedEnd();
        QCoreApplication::exit(0);
    });
    Startup startup(core);
    std::unique_ptr<MainWindow> window;
    auto initMainWindow = [&] {
        window = std::make_unique<MainWindow>(&core, prompts);
        widgetPrompts.setWindow(window.get());
    };

    const Startup::Outcome outcome =
        startup.formLoad(Startup::commandLineOf(QCoreApplication::arguments()), initMainWindow);
    if (outcome.endProcess)
        return outcome.exitCode;
    if (!window)
        initMainWindow(); // start-up failed part way: the window shows as far as it goes

    QObject::connect(&core, &AppCore::quitRequested, &app, &QApplication::quit);

    QObject::connect(&app, &QGuiApplication::commitDataRequest, &app,
                     [&](QSessionManager &) { core.saveBeforeForcedEnd(); });

    if (outcome.hideWindow)
        window->hideToTrayOrMinimise();
    else
        window->show();
    return app.exec();
}
