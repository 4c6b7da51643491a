// tessalwick-send: hands text over to the running Tessalwick, as a browser
// helper or any other program does, through the instance's hand-over socket.
#include "app/appcore.h"
#include "app/captureserver.h"
#include "app/cregister.h"
#include "intake/browsercapture.h"

#include <QCoreApplication>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <cstdio>

#include <unistd.h>

namespace {

const char kUsage[] =
    "usage: tessalwick-send [--tab] [TEXT...]\n"
    "       tessalwick-send --native-messaging [BROWSER ARGUMENTS...]\n"
    "\n"
    "Hands TEXT (the arguments joined by blanks), or standard input when there are\n"
    "no arguments, to the running Tessalwick as one message. Tessalwick adds the\n"
    "links of its sites that it finds in the text to its download list, just as\n"
    "if they had been pasted, and starts all downloads afterwards when \"Start\n"
    "download when add or catch sharing link.\" is set in its Options.\n"
    "\n"
    "  --tab    the text is a link opened in a new browser tab: Tessalwick drops\n"
    "           it when \"When open supported link in new browser tab\" is set\n"
    "           to \"Do Nothing\" (the downloads still start if set to).\n"
    "  --native-messaging\n"
    "           serve the Tessalwick browser extension: read the browser's native\n"
    "           messages on standard input and answer each on standard output.\n"
    "           The browser starts it so; the arguments it adds are ignored.\n"
    "  --help   this text.\n"
    "\n"
    "Exit status: 0 once Tessalwick has taken the text; 1 when no Tessalwick runs\n"
    "(it is never started) or it did not answer; 2 for a wrong call.\n";

int usage(const char *problem)
{
    std::fprintf(stderr, "tessalwick-send: %s\n\n%s", problem, kUsage);
    return 2;
}

// Hands one message to the running instance; the empty text once it took it.
QString handOver(const QString &message)
{
    const QString name = Settings::get(QStringLiteral("AppTextHandle"), QString());
    if (!CaptureServer::isLive(name))
        return QStringLiteral("Tessalwick is not running; start it first.");
    if (!CaptureServer::sendText(name, message.toUtf8()))
        return QStringLiteral("Tessalwick did not take the text.");
    return QString();
}

bool writeAll(const QByteArray &bytes)
{
    for (qsizetype done = 0; done < bytes.size();) {
        const ssize_t put = ::write(STDOUT_FILENO, bytes.constData() + done, bytes.size() - done);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            return false;
        done += put;
    }
    return true;
}

// Serves the browser until it closes standard input: 0 when it closed between
// messages, 1 when a message was cut off or too long, or the browser stopped
// reading the answers.
int serveBrowser()
{
    std::signal(SIGPIPE, SIG_IGN); // a browser gone shows as a failed write
    BrowserCapture::NativeHost host(handOver);
    char buffer[64 * 1024];
    for (;;) {
        const ssize_t got = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return host.betweenMessages() ? 0 : 1;
        if (!writeAll(host.take(QByteArrayView(buffer, got))) || host.broken())
            return 1;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QStringList words = QCoreApplication::arguments().mid(1);
    bool tab = false;
    while (!words.isEmpty() && words.first().startsWith(QLatin1String("--"))) {
        const QString option = words.takeFirst();
        if (option == QLatin1String("--"))
            break;
        if (option == QLatin1String("--native-messaging"))
            return serveBrowser();
        if (option == QLatin1String("--help")) {
            std::fputs(kUsage, stdout);
            return 0;
        }
        if (option != QLatin1String("--tab"))
            return usage(qPrintable(QStringLiteral("unknown option %1").arg(option)));
        tab = true;
    }
    QString text = words.join(u' ');
    if (words.isEmpty()) {
        QFile in;
        if (!in.open(stdin, QIODevice::ReadOnly))
            return usage("standard input can't be read");
        // The program cuts lines at CR LF; a script's lines end in LF alone.
        text = QString::fromUtf8(in.readAll());
        text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
        text.replace(u'\n', QLatin1String("\r\n"));
    }
    if (text.trimmed().isEmpty())
        return usage("nothing to send");

    const QString error = handOver((tab ? AppCore::capturePrefix : QString()) + text);
    if (!error.isEmpty()) {
        std::fprintf(stderr, "tessalwick-send: %s\n", qPrintable(error));
        return 1;
    }
    return 0;
}
