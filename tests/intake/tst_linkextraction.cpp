#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "listrows.h"
#include "sandbox.h"

#include <QtTest>

#include <memory>

namespace {

const QString kFirstSentence = QStringLiteral(
    "Type or paste the sharing links, You can paste the whole web page and the program will "
    "extract the valid links.");
const QString kSecondSentence =
    QStringLiteral("Also you can check Browser Integeration in the program options.");

// What a person was told, messages first, each with its look.
QStringList told(const FakePrompts &prompts)
{
    QStringList out;
    for (const FakePrompts::Message &m : prompts.messages)
        out << QStringLiteral("message %1 %2 %3: %4")
                   .arg(int(m.icon))
                   .arg(int(m.buttons))
                   .arg(m.title, m.text);
    for (const FakePrompts::Balloon &b : prompts.balloons)
        out << QStringLiteral("balloon %1 %2 %3: %4")
                   .arg(b.kind)
                   .arg(b.milliseconds)
                   .arg(b.title, b.text);
    return out;
}

} // namespace

class TestLinkExtraction : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { m_sandbox = std::make_unique<Sandbox>(); }
    void cleanup() { SiteHosts::instance().reset(); }

    void classify_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<int>("site");
        auto row = [](const char *name, const QString &word, int site) {
            QTest::newRow(name) << word << site;
        };

        // Each recognised site.
        row("rapidshare", "http://rapidshare.com/files/123/a.zip", 1);
        row("youtube", "http://www.youtube.com/watch?v=abc123", 2);
        row("megaupload", "http://www.megaupload.com/?d=ABCDEF", 3);
        row("4shared", "http://www.4shared.com/file/1234/setup.html", 4);
        row("depositfiles", "http://depositfiles.com/files/xyz", 6);
        row("hotfile", "http://hotfile.com/dl/1/ab/movie.rar.html", 7);
        row("filefactory", "http://www.filefactory.com/file/a1b2/n/data.zip", 8);

        // Excluded and required fragments, in the path.
        row("rapidshare upload progress", "http://rapidshare.com/progress.html?uploadid=77", 0);
        row("youtube search", "http://www.youtube.com/results?search_query=watch?x", 0);
        row("youtube legacy signin", "http://www.youtube.com/action_handle_legacy_signin?watch?v=1",
            0);
        row("youtube adsense", "http://www.youtube.com/adsense_script.html?watch?v=1", 0);
        row("youtube without watch", "http://www.youtube.com/user/someone", 0);
        row("youtube in capitals", "HTTP://WWW.YOUTUBE.COM/WATCH?V=1", 2);
        row("megaupload mc.php", "http://www.megaupload.com/mc.php?l=5", 0);
        row("4shared banners", "http://www.4shared.com/advertise/banners/1.gif", 0);
        row("4shared zoneid", "http://www.4shared.com/www/delivery/afr.php?zoneid=3", 0);

        row("4shared zoneid other", "http://www.4shared.com/www/delivery/afr.php?zone", 4);
        row("4shared progress bar", "http://www.4shared.com/main/frameAnonUploadProgressBar.jsp?x",
            0);
        row("filefactory upload", "http://www.filefactory.com/upload/form", 0);
        row("filefactory ads", "http://www.filefactory.com/ads/box.html", 0);
        row("filefactory ads as tail", "http://www.filefactory.com/file/downloads/x", 0);
        row("filefactory upload as tail", "http://www.filefactory.com/file/reupload/x", 0);
        row("filefactory premium", "http://www.filefactory.com/premium/index.php?a=1", 0);
        row("filefactory takeover", "http://www.filefactory.com/takeoverad.html?f=1", 0);
        // Fragments count only behind the first "/": before it they decide nothing.
        row("excluded fragment before the path", "progress.html?uploadid.rapidshare.com/files/1",
            1);
        row("required fragment before the path", "watch?.youtube.com/user/x", 0);

        // MediaFire is never recognised.
        row("mediafire", "http://www.mediafire.com/?abc123def", 0);

        // Without a scheme, in capitals, with a tab in front.
        row("no scheme", "rapidshare.com/files/1/a.zip", 1);
        row("capitals", "HTTP://WWW.RAPIDSHARE.COM/FILES/1/A.ZIP", 1);

        row("tab in front", "\thttp://hotfile.com/dl/1/x", 7);
        row("blanks around", "   http://hotfile.com/dl/1/x  ", 7);

        // A lone LF joins two links into one word, decided by the table's order.
        row("lone LF", "http://hotfile.com/dl/1/a\nhttp://rapidshare.com/files/2", 1);
        row("lone CR", "http://hotfile.com/dl/1/a\rhttp://megaupload.com/?d=2", 3);

        // The path must have at least 2 characters.
        row("root", "http://rapidshare.com/", 0);
        row("root with 1 character", "http://rapidshare.com/x", 0);
        row("root with 2 characters", "http://rapidshare.com/xy", 1);

        row("no slash at all", "rapidshare.com", 0);

        // The first row whose literal occurs decides alone.
        row("rapidshare inside youtube",
            "http://www.youtube.com/watch?v=1&u=rapidshare.com/files/9", 1);

        row("refused by first row, no fall-through",
            "http://rapidshare.com/progress.html?uploadid=1&next=hotfile.com/dl/1", 0);
        row("youtube refuses, hotfile not tried", "http://www.youtube.com/user/x?hotfile.com/dl/1",
            0);

        // Other schemes are left in place: the path starts at the scheme's "/".
        row("ftp", "ftp://rapidshare.com/files/1/a.zip", 1);
        row("ftp short root", "ftp://hotfile.com/a", 7);
        row("https", "https://www.youtube.com/watch?v=1", 2);
        row("ftp youtube watch", "ftp://youtube.com/user/x", 0);

        // Schemes are removed wherever they stand.
        row("embedded scheme", "x=http://www.hotfile.com/a", 0);
        // "http://www." goes first, and what its removal joins is removed as "http://".
        row("schemes removed in order", "hthttp://www.tp://hotfile.com/a", 0);
        row("redirect", "http://www.example.org/go?u=http://rapidshare.com/files/1", 1);

        // Foreign words.
        row("foreign link", "http://www.example.org/page/1.html", 0);
        row("literal without slash", "visit-rapidshare.com-today", 0);
        row("host lookalike", "http://rapidshare.co/files/1", 0);
        row("longer host", "http://rapidshare.community/files/1", 0);
    }

    void classify()
    {
        QFETCH(QString, word);
        QFETCH(int, site);
        QCOMPARE(classifyLink(word), site);
    }

    void siteHostsDecideLiterals_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("word");
        QTest::addColumn<int>("site");
        auto row = [](const char *name, const char *key, const char *host, const char *word,
                      int site) {
            QTest::newRow(name) << QString(key) << QString(host) << QString(word) << site;
        };
        row("local hotfile", "hotfile", "127.0.0.1:8123", "http://127.0.0.1:8123/dl/1/x", 7);
        row("old host dropped", "hotfile", "127.0.0.1:8123", "http://hotfile.com/dl/1/x", 0);
        row("other port", "hotfile", "127.0.0.1:8123", "http://127.0.0.1:8124/dl/1/x", 0);
        row("local youtube still needs watch", "youtube", "127.0.0.1:9000",
            "http://127.0.0.1:9000/user/x", 0);
        row("local youtube watch", "youtube", "127.0.0.1:9000", "http://127.0.0.1:9000/watch?v=1",
            2);
        row("host with www and capitals", "rapidshare", "WWW.RapidShare.Example",
            "http://rapidshare.example/files/1", 1);
        // With a one-letter host the word's length limit is what decides.
        row("short host, 4 characters", "hotfile", "h", "h/ab", 0);
        row("short host, 5 characters", "hotfile", "h", "h/abc", 7);
        row("mediafire pointed locally", "mediafire", "127.0.0.1:7000",
            "http://127.0.0.1:7000/?abc", 0);
    }
    void siteHostsDecideLiterals()
    {
        QFETCH(QString, key);
        QFETCH(QString, host);
        QFETCH(QString, word);
        QFETCH(int, site);
        SiteHosts::instance().setHost(key, host);
        QCOMPARE(classifyLink(word), site);

        // The same through a paste.
        DownloadList list;
        list.open();
        QCOMPARE(::parseLinks(word + "\r\nand more", false, list, nullptr), site ? 1 : 0);
        QCOMPARE(rowsOf(list),
                 site ? QStringList{QString::number(site) + u'|' + word} : QStringList{});
    }

    void parseLinks_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("result");
        QTest::addColumn<QString>("balloon");
        QTest::addColumn<QStringList>("rows");
        auto row = [](const char *name, const QString &text, int result, const QString &balloon,
                      const QStringList &rows) {
            QTest::newRow(name) << text << result << balloon << rows;
        };
        const QString rs = QStringLiteral("http://rapidshare.com/files/1/a.zip");
        const QString hf = QStringLiteral("http://hotfile.com/dl/2/b/c.rar.html");
        const QString yt = QStringLiteral("http://www.youtube.com/watch?v=q1");

        row("empty", "", -1, "", {});
        row("abcd", "abcd", -1, "", {});
        row("blanks", "          ", -1, "", {});
        // Only blanks count as empty; five characters of line breaks are looked at.
        row("line breaks", "\r\n\r\n\t", 0, "", {});
        row("ordinary text", "a page of ordinary text without a single site literal", 0, "", {});
        row("one link", rs, 1, "1 Link Added", {"1|" + rs});
        row("three lines", rs + "\r\n" + hf + "\r\n" + yt, 3, "3 Links Added",
            {"1|" + rs, "2|" + yt, "7|" + hf});
        row("a page",
            "<p>Mirrors: " + hf + " and " + rs +
                " <br>\r\n<a href=\"#\">more</a> http://www.mediafire.com/?x",
            2, "2 Links Added", {"1|" + rs, "7|" + hf});
        row("runs of blanks", "   " + rs + "     " + hf + "   ", 2, "2 Links Added",
            {"1|" + rs, "7|" + hf});
        // Only new rows count; the list decides what is a duplicate.
        row("duplicates in one paste", rs + " " + rs + "\r\n" + rs.toUpper(), 1, "1 Link Added",
            {"1|" + rs});
        row("lone LF joins", hf + "\n" + rs, 1, "1 Link Added", {"1|" + hf + "\n" + rs});
        row("lone CR joins", rs + "\r" + hf, 1, "1 Link Added", {"1|" + rs + "\r" + hf});
        row("LF CR does not cut", hf + "\n\r" + rs, 1, "1 Link Added", {"1|" + hf + "\n\r" + rs});
        row("quoted attribute", "<a href=\"" + hf + "\">file</a>", 1, "1 Link Added",
            {"7|href=\"" + hf + "\">file</a>"});
        // The rows keep each word as written: tab, capitals, scheme or none.
        row("words as written",
            "\tHTTP://WWW.HOTFILE.COM/DL/1/A/B.RAR.HTML  rapidshare.com/files/7/c.zip\r\n"
            "ftp://megaupload.com/?d=QQ",
            3, "3 Links Added",
            {"1|rapidshare.com/files/7/c.zip", "3|ftp://megaupload.com/?d=QQ",
             "7|\tHTTP://WWW.HOTFILE.COM/DL/1/A/B.RAR.HTML"});
        // More rows than a 16-bit count holds.
        QStringList many, manyRows;
        for (int i = 0; i < 33000; ++i) {
            many << QStringLiteral("hotfile.com/dl/%1").arg(i);
            manyRows << "7|" + many.last();
        }
        row("33000 links", many.join(QStringLiteral("\r\n")), 33000, "33000 Links Added", manyRows);
    }
    void parseLinks()
    {
        QFETCH(QString, text);
        QFETCH(int, result);
        QFETCH(QString, balloon);
        QFETCH(QStringList, rows);
        // Only the user's own paste hears of no links.
        for (bool isCommand : {false, true}) {
            DownloadList list;
            list.open();
            FakePrompts prompts;
            QCOMPARE(::parseLinks(text, isCommand, list, &prompts), result);
            QCOMPARE(rowsOf(list), rows);
            QStringList expected;
            if (result == -1 && !isCommand) // Exclamation, Ok
                expected << "message 3 0 Tessalwick: No Supported links Found.";
            if (!balloon.isEmpty())
                expected << "balloon 1 5000 Tessalwick: " + balloon;
            QCOMPARE(told(prompts), expected);
        }
    }

    void hintForms()
    {
        // Blanks before, between and after the two sentences, and line breaks.
        QCOMPARE(LinkHint::designText(), QString(15, u' ') + kFirstSentence + QString(14, u' ') +
                                             "\r\n" + QString(39, u' ') + kSecondSentence + "\r\n");
        QCOMPARE(LinkHint::shortText(),
                 QString(9, u' ') + kFirstSentence + QString(59, u' ') + kSecondSentence);
        QCOMPARE(LinkHint::lostFocusText(), LinkHint::shortText() + "\r\n");
    }

    void holdsHint_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("holds");
        QTest::newRow("design text") << LinkHint::designText() << true;
        QTest::newRow("sentence alone") << kFirstSentence << true;
        QTest::newRow("among links")
            << "http://hotfile.com/dl/1/x\r\n" + kFirstSentence + " more" << true;
        QTest::newRow("other case") << kFirstSentence.toLower() << false;
        QTest::newRow("without the full stop") << kFirstSentence.chopped(1) << false;
        QTest::newRow("second sentence only") << kSecondSentence << false;
        QTest::newRow("links") << "http://hotfile.com/dl/1/x" << false;
    }
    void holdsHint()
    {
        QFETCH(QString, text);
        QFETCH(bool, holds);
        QCOMPARE(LinkHint::holdsHint(text), holds);
    }

private:
    std::unique_ptr<Sandbox> m_sandbox;
};

QTEST_GUILESS_MAIN(TestLinkExtraction)
#include "tst_linkextraction.moc"
