// Writes the seed corpora of the fuzz targets into <folder>/<target>/: the
// fake sites' pages for the page readers, a page of links of every site, a
// list file the program saved, a transfer's answers and hand-over frames.
#include "app/handover.h"
#include "fakedepositfiles.h"
#include "fakefilefactory.h"
#include "fakefourshared.h"
#include "fakehotfile.h"
#include "fakemediafire.h"
#include "fakemegaupload.h"
#include "fakerapidshare.h"
#include "fakeyoutube.h"
#include "fuzzcommon.h"
#include "list/downloadlist.h"
#include "list/linklistfile.h"
#include "list/sitetable.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <cstdio>

namespace {

QString g_root;
int g_count = 0;

void seed(const char *target, const QByteArray &bytes)
{
    QDir().mkpath(g_root + '/' + target);
    QFile file(QStringLiteral("%1/%2/seed-%3").arg(g_root, target).arg(++g_count));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        Fuzz::broken("a seed could not be written");
}

// fuzz_pages: the reader's number, the link, a NUL byte, the page.
void page(int reader, const QString &link, const QString &text)
{
    seed("fuzz_pages", char(reader) + link.toUtf8() + '\0' + text.toUtf8());
}

void pages()
{
    const QString direct = QStringLiteral("http://files.example/dl/1234/movie.avi");
    page(0, {}, FakeRapidShare::filePage("/post/1", "movie.avi"));
    page(0, {}, FakeRapidShare::goneFirstPage);
    page(1, "http://rapidshare.com/files/1/movie.avi", FakeRapidShare::downloadPage(direct, 45));
    page(1, {}, FakeRapidShare::minutesErrorPage("3"));
    page(1, {}, FakeRapidShare::goneErrorPage);
    page(2, {}, FakeYoutube::watchPage("AbCdEf", "T0k%3Den", "A &quot;title&quot;"));
    page(3, {}, "http%3A%2F%2Fexample%2Fa%zz");
    page(4, {}, "http://www.megaupload.com/?d=ABCDEFGH");
    page(5, "http://www.megaupload.com/?d=ABCDEFGH",
         "HTTP/1.1 302 Found\r\nLocation: " + direct + "\r\n\r\n");
    page(6, {}, FakeMegaUpload::captchaPage("http://www.megaupload.com/gencap.php?1.gif"));
    page(6, {}, FakeMegaUpload::gonePage);
    page(7, {}, FakeMegaUpload::downloadPage(direct, "45"));
    page(8, "http://www.4shared.com/file/123/abc.html?x=1", {});
    page(9, {}, FakeFourShared::downloadPage.arg("20", direct + "?tsid=1"));
    page(10, {}, "<script>function DoShow(){}</script>");
    page(11, "http://www.mediafire.com/?key",
         FakeMediaFire::scriptPage({"var a='dl'", "var b='123'"}));
    page(12, {}, "http://depositfiles.com/de/files/123");
    page(13, {}, FakeDepositFiles::downloadPage(direct, "movie.avi", 60));
    page(13, {}, FakeDepositFiles::slotsBusyPage + FakeDepositFiles::gonePage);
    page(14, {}, FakeHotFile::formPage("41", "1500"));
    page(15, "http://hotfile.com/dl/41/movie.avi",
         "<a href=\"" + direct + "\" class=click_download>Get</a>");
    page(15, {}, FakeHotFile::disabledPage);
    page(16, {}, FakeFileFactory::firstPage.arg("/dlf/1"));
    page(16, {}, FakeFileFactory::noSlotsPage + FakeFileFactory::tryLaterPage);
    page(17, "http://www.filefactory.com/file/1/movie.avi",
         FakeFileFactory::downloadPage.arg("30", direct));
    page(18, {}, "You must wait 120 seconds");
    page(19, direct, "movie.avi?x=1");
}

// fuzz_links: a page with a link of every site, twice, in a few spellings.
QString linksPage()
{
    QString text = QStringLiteral("<html><body>\n");
    for (const auto &site : Sites::all()) {
        const QString link = QStringLiteral("http://%1/files/1234/file%2.zip")
                                 .arg(QString::fromLatin1(site.defaultHost))
                                 .arg(site.number);
        text += "<a href=\"" + link + "\">" + link.toUpper() + "</a> " + link + "\r\n";
    }
    return text + QStringLiteral("</body></html>");
}

void listFile(const QString &links)
{
    DownloadList list;
    list.open();
    for (const QString &word : links.split(QRegularExpression(QStringLiteral("[\\s\"<>]+"))))
        for (const auto &site : Sites::all())
            if (word.startsWith(QStringLiteral("http://%1/").arg(site.defaultHost)))
                list.addLinkToList(word, site.number, nullptr);
    const QString path = g_root + QStringLiteral("/list.lq");
    if (!LinkListFile::saveLinkList(list, path))
        Fuzz::broken("the seed list could not be saved");
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        Fuzz::broken("the seed list could not be read");
    seed("fuzz_listfile", file.readAll());
    file.remove();
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds FOLDER\n");
        return 2;
    }
    Fuzz::application();
    g_root = QString::fromLocal8Bit(argv[1]);
    pages();
    const QString links = linksPage();
    seed("fuzz_links", links.toUtf8());
    listFile(links);
    // A transfer's answers, cut into chunks where 0xff stands.
    seed("fuzz_transfer", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n\xff"
                          "0123456789");
    seed("fuzz_transfer", "HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:9/x\r\n\r\n");
    seed("fuzz_transfer", "HTTP/1.1 404 Not Found\r\n\xff\r\n\r\n<html>gone</html>");
    seed("fuzz_transfer", FakeMegaUpload::picture());
    // Hand-over frames: the cutting byte, then messages.
    seed("fuzz_handover", '\x07' + HandOver::frame("http://rapidshare.com/files/1/a.zip") +
                              HandOver::frame(QByteArray()));
    seed("fuzz_handover", "\x01\x7f\xff\xff\xff" + QByteArray(64, 'x'));
    std::printf("%d seeds written to %s\n", g_count, argv[1]);
    return 0;
}
