#include "datatable.h"
#include "fakeprompts.h"
#include "intake/linkextraction.h"
#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "listrows.h"
#include "sandbox.h"

#include <QtTest>

// A word, the site it is (0: none), and the sites pointed at other hosts first.
using Words = Table<QString, int, QString>;
// A pasted text; parseLinks' result, what the person is told (the message box
// or the balloon, as FakePrompts::told() writes it), and the list's rows after.
using Pastes = Table<QString, int, QString, QStringList>;

class TestLinkExtraction : public QObject
{
    Q_OBJECT
    Sandbox m_sandbox;
private slots:
    void cleanup() { SiteHosts::instance().reset(); }

    void classify_data()
    {
        const Words table;
        auto row = [&](const char *name, const QString &word, int site, const char *hosts = "") {
            table(name, word, site, hosts);
        };

        // The sites that no other row takes.
        row("4shared", "http://www.4shared.com/file/1234/setup.html", 4);
        row("depositfiles", "http://depositfiles.com/files/xyz", 6);
        row("filefactory", "http://www.filefactory.com/file/a1b2/n/data.zip", 8);

        // Excluded and required fragments, in any case. (tst_browsercapture
        // tries every fragment of every site, at the path's end.)
        row("youtube without watch", "http://www.youtube.com/user/someone", 0);
        row("in capitals", "HTTP://WWW.YOUTUBE.COM/WATCH?V=1", 2);
        row("4shared progress", "http://www.4shared.com/main/frameAnonUploadProgressBar.jsp?x", 0);
        // Fragments count only behind the first "/": before it they decide nothing.
        row("excluded before the path", "progress.html?uploadid.rapidshare.com/files/1", 1);
        row("required before the path", "watch?.youtube.com/user/x", 0);

        // MediaFire is never recognised.
        row("mediafire", "http://www.mediafire.com/?abc123def", 0);

        // The path must have at least 2 characters.
        row("root with 1 character", "http://rapidshare.com/x", 0);
        row("root with 2 characters", "http://rapidshare.com/xy", 1);

        // The first site, in table order, whose literal occurs decides alone
        // (parseLinks' "lone LF" row shows the order): a refusal by an
        // excluded or a missing required fragment is final.
        row("excluded is final", "rapidshare.com/progress.html?uploadid&hotfile.com/dl/1", 0);
        row("required is final", "http://www.youtube.com/user/x?hotfile.com/dl/1", 0);

        // Other schemes are left in place: the path starts at the scheme's "/".
        row("ftp short root", "ftp://hotfile.com/a", 7);

        // Schemes are removed wherever they stand.
        row("embedded scheme", "x=http://www.hotfile.com/a", 0);
        // "http://www." goes first, and what its removal joins is removed as "http://".
        row("schemes removed in order", "hthttp://www.tp://hotfile.com/a", 0);

        // A foreign word.
        row("longer host", "http://rapidshare.community/files/1", 0);

        // The site hosts decide the literals (tst_send hands the program a
        // link of a fake site, whose host has a port).
        row("old host dropped", "http://hotfile.com/dl/1/x", 0, "hotfile=127.0.0.1:8123");
        row("host with www and capitals", "http://rapidshare.example/files/1", 1,
            "rapidshare=WWW.RapidShare.Example");
        // With a one-letter host the word's length limit is what decides.
        row("short host, 4 characters", "h/ab", 0, "hotfile=h");
        row("short host, 5 characters", "h/abc", 7, "hotfile=h");
    }
    void classify()
    {
        const auto [word, site, hosts] = Words::fetch();
        SiteHosts::instance().applyOverrides(hosts);
        QCOMPARE(classifyLink(word), site);
    }

    void parseLinks_data()
    {
        const Pastes row;
        const QString none = "message 3 0 Tessalwick: No Supported links Found."; // Exclamation, Ok
        const QString balloon = "balloon 1 5000 Tessalwick: ";
        const QString rs = QStringLiteral("http://rapidshare.com/files/1/a.zip");
        const QString hf = QStringLiteral("http://hotfile.com/dl/2/b/c.rar.html");

        row("abcd", "abcd", -1, none, {});
        row("blanks", "          ", -1, none, {});
        // Only blanks count as empty; five characters of line breaks are looked at.
        row("line breaks", "\r\n\r\n\t", 0, "", {});
        // Only new rows count; the list decides what is a duplicate. Runs of
        // blanks around the words give empty words.
        row("duplicates, blanks", "  " + rs + "   " + rs + "\r\n" + rs.toUpper() + "  ", 1,
            balloon + "1 Link Added", {"1|" + rs});
        // Lines end at CR LF only: the first site whose literal occurs takes the word.
        const QString joined = hf + "\n" + rs + "\n\r" + hf;
        row("lone LF and LF CR join", joined, 1, balloon + "1 Link Added", {"1|" + joined});
        // The rows keep each word as written: tab, capitals, scheme or none.
        row("words as written",
            "\tHTTP://WWW.HOTFILE.COM/DL/1/A/B.RAR.HTML  rapidshare.com/files/7/c.zip\r\n"
            "ftp://megaupload.com/?d=QQ",
            3, balloon + "3 Links Added",
            {"1|rapidshare.com/files/7/c.zip", "3|ftp://megaupload.com/?d=QQ",
             "7|\tHTTP://WWW.HOTFILE.COM/DL/1/A/B.RAR.HTML"});
        // More rows than a 16-bit count holds.
        QStringList many; // as rows
        for (int i = 0; i < 33000; ++i)
            many << QStringLiteral("7|hotfile.com/dl/%1").arg(i);
        row("33000 links", QStringList(many).replaceInStrings("7|", "").join("\r\n"), 33000,
            balloon + "33000 Links Added", many);
    }
    void parseLinks()
    {
        const auto [text, result, told, rows] = Pastes::fetch();
        // The user's own paste; a command (tst_capture's hand-overs) hears
        // of no links in silence.
        DownloadList list;
        list.open();
        FakePrompts prompts;
        QCOMPARE(::parseLinks(text, false, list, &prompts), result);
        QCOMPARE(rowsOf(list), rows);
        QCOMPARE(prompts.told().join(u'\n'), told);
    }

    // The box holds the hint while its text holds the first sentence exactly,
    // anywhere (tst_mainwindow's link box shows the hint itself goes).
    void holdsHint()
    {
        const QString sentence("Type or paste the sharing links, You can paste the whole web page "
                               "and the program will extract the valid links.");
        QVERIFY(LinkHint::holdsHint("http://hotfile.com/dl/1/x\r\n" + sentence + " more"));
        for (const QString &text : {sentence.toLower(), sentence.chopped(1)})
            QVERIFY(!LinkHint::holdsHint(text));
    }
};

QTEST_GUILESS_MAIN(TestLinkExtraction)
#include "tst_linkextraction.moc"
