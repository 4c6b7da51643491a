#include "list/formats.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {
// Fills a folder from a blank-separated list: "x/" is a folder, "~x" an empty
// file, anything else a file with data. Gives the number of entries, -1 when
// one can't be made.
int populate(const QTemporaryDir &dir, const QString &entries)
{
    const QStringList names = entries.split(' ', Qt::SkipEmptyParts);
    for (const QString &name : names) {
        QFile f(dir.filePath(name.mid(name.startsWith('~') ? 1 : 0)));
        if (name.endsWith('/') ? !QDir(dir.path()).mkdir(name) : !f.open(QIODevice::WriteOnly))
            return -1;
        if (!name.endsWith('/') && !name.startsWith('~'))
            f.write("data");
    }
    return int(names.size());
}
} // namespace

class TestFormats : public QObject
{
    Q_OBJECT
private slots:
    // The list's display texts. Each row names its function: "size" is
    // sizeToText (bytes in), "bytes" textToSize (float out), "time"
    // secondsToTimeText and "clean" cleanFileName.
    void texts_data()
    {
        QTest::addColumn<QString>("function");
        QTest::addColumn<QString>("input");
        QTest::addColumn<QString>("output");
        const char *function = "size";
        auto row = [&function](const char *input, const char *output) {
            QByteArray tag = QByteArray(input).replace('\r', "\\r").replace('\n', "\\n");
            QTest::addRow("%s(%s)", function, tag.replace('\t', "\\t").constData())
                << QString(function) << QString(input) << QString(output);
        };
        row("0", "0 Bytes");
        row("-5", "-5 Bytes");
        row("1023", "1023 Bytes");
        row("1024", "1 KB");
        row("1536", "1.5 KB");
        row("1126", "1.1 KB");
        row("1152", "1.12 KB"); // a tie goes to the even hundredth, down
        row("1408", "1.38 KB"); // and up
        row("1153", "1.13 KB");
        row("1048575", "1024 KB");
        row("1048576", "1 MB");
        row("123456789", "117.74 MB");
        row("1073741823", "1024 MB");
        row("1073741824", ""); // exactly one GB has no text
        row("1073741825", "1 GB");
        row("1610612736", "1.5 GB");
        row("2147483647", "2 GB");
        row("5905580032", "5.5 GB");

        function = "bytes";
        row("1.5 MB", "1572864");
        row("?", "0");
        row("", "0");
        row("12 Bytes", "12");
        row("2 KB", "2048");
        row("1 GB", "1073741824");
        row("3 TB", "0");
        row("2 kb", "0");
        row("  2 KB  ", "2048");
        row("2  KB", "0"); // a double blank leaves no unit
        row("1.5 KB left", "1536");
        row("abc KB", "0");
        row(" KB", "0");
        row("2047.99 MB", "2147473152"); // single precision drops the low digits
        row("1e300 GB", "0");
        // Sizes written as text come back only as exact as their two decimals.
        row("1.1 KB", "1126.4");
        row("117.74 MB", "123459336");

        function = "time";
        row("0", "00:00:00");
        row("5", "00:00:05");
        row("0.5", "00:00:01"); // below 61 a half rounds away from zero
        row("60", "00:00:60");
        row("60.6", "00:00:61");
        row("61", "00:01:01");
        row("61.5", "00:01:02"); // from 61 on ties go to even, up
        row("62.5", "00:01:02"); // and down
        row("3599", "00:59:59");
        row("3599.5", "00:60:00");
        row("3600", "01:00:00");
        row("3630", "01:00:30"); // minutes tie to even, down
        row("3690", "01:01:30"); // and up
        row("5399", "01:29:59"); // the hour follows the rounded minutes
        row("5370", "01:29:30");
        row("5430", "01:30:30");
        row("7199", "02:59:59");
        row("7200", "02:00:00");
        row("360000", "100:00:00");

        function = "clean";
        row(" a:b?.zip ", "ab.zip");
        row("x\\y/z.rar", "xyz.rar");
        row("\"it's\".txt", "its.txt");
        row("a*<b>|c.avi", "abc.avi");
        row("one, two.mp3", "one two.mp3");
        row("a\r\nb\rc\nd", "abcd");
        row(": name :", "name"); // blanks left by a removal go too
        row("\tname\t", "\tname\t");
        row("?*:", "");
        row("Movie (2009) [HD]-x_y.mkv", "Movie (2009) [HD]-x_y.mkv");
    }
    void texts()
    {
        QFETCH(QString, function);
        QFETCH(QString, input);
        QFETCH(QString, output);
        if (function == "size")
            QCOMPARE(sizeToText(input.toLongLong()), output);
        else if (function == "bytes") // to the bit: QCOMPARE on floats is fuzzy
            QCOMPARE(QString::number(textToSize(input), 'g', 9),
                     QString::number(output.toFloat(), 'g', 9));
        else if (function == "time")
            QCOMPARE(secondsToTimeText(input.toFloat()), output);
        else
            QCOMPARE(cleanFileName(input), output);
    }

    void uniqueNames_data()
    {
        QTest::addColumn<QString>("present");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("unique");
        auto row = [](const char *tag, const char *present, const char *name, const char *unique) {
            QTest::newRow(tag) << QString(present) << QString(name) << QString(unique);
        };
        row("free", "", "clip.avi", "clip.avi");
        row("empty file is free", "~clip.avi", "clip.avi", "clip.avi");
        row("first copy", "clip.avi", "clip.avi", "clip_1.avi");
        row("second copy", "clip.avi clip_1.avi", "clip.avi", "clip_2.avi");
        row("empty copy used", "clip.avi ~clip_1.avi", "clip.avi", "clip_1.avi");
        row("underscore name", "my_file.avi", "my_file.avi", "my_file_1.avi");
        row("underscore name twice", "my_file.avi my_file_1.avi", "my_file.avi", "my_file_1_1.avi");
        row("counter counts, rest dropped", "a_3_b.zip", "a_3_b.zip", "a_4.zip");
        row("counter counts twice", "a_3_b.zip a_4.zip", "a_3_b.zip", "a_5.zip");
        row("counter without stem", "_7.zip", "_7.zip", "_8.zip");
        row("decimal counter rounds to even", "v_2.5.zip", "v_2.5.zip", "v_3.zip");
        row("counter past 16 bits", "a_32767.zip", "a_32767.zip", "a_32768.zip");
        row("no extension gains a dot", "readme", "readme", "readme_1.");
        row("no extension, second copy", "readme readme_1.", "readme", "readme_2.");
        row("last extension only", "archive.tar.gz", "archive.tar.gz", "archive.tar_1.gz");
    }
    void uniqueNames()
    {
        QFETCH(QString, present);
        QFETCH(QString, name);
        QFETCH(QString, unique);
        QTemporaryDir dir;
        const int made = populate(dir, present);
        QCOMPARE(uniqueLocalFileName(dir.filePath(name)), dir.filePath(unique));
        // Nothing is created or changed on the way.
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), made);
    }

    void folderPaths_data()
    {
        // "%1" stands for a fresh temporary folder holding "present";
        // "folders" must be folders afterwards, "missing" must not exist.
        QTest::addColumn<QString>("present");
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("made");
        QTest::addColumn<QString>("folders");
        QTest::addColumn<QString>("missing");
        auto row = [](const char *tag, const char *present, const QString &path, bool made,
                      const char *folders, const char *missing) {
            QTest::newRow(tag) << QString(present) << path << made << QString(folders)
                               << QString(missing);
        };
        row("empty", "", "", false, "", "");
        row("two characters", "", "ab", false, "", "ab");
        row("root", "", "///", true, "", "");
        row("one level", "", "%1/new", true, "new", "");
        row("missing parents", "", "%1/x/y/z", true, "x x/y x/y/z", "");
        row("existing folder", "old/", "%1/old", true, "old", "");
        row("partly existing", "old/", "%1/old/a/b", true, "old/a/b", "");
        row("separator at the end", "", "%1/t/u/", true, "t/u", "");
        row("doubled separators", "", "%1//p//q", true, "p/q", "");
        row("file in the way", "f.txt", "%1/f.txt/sub", false, "", "f.txt/sub");
        row("file at the end", "f.txt", "%1/f.txt", false, "", "");
        row("made levels remain", "", "%1/kept/" + QString(300, 'n') + "/x", false, "kept",
            "kept/x");
    }
    void folderPaths()
    {
        QFETCH(QString, present);
        QFETCH(QString, path);
        QFETCH(bool, made);
        QFETCH(QString, folders);
        QFETCH(QString, missing);
        QTemporaryDir dir;
        QVERIFY(populate(dir, present) >= 0);
        // Relative paths land in the temporary folder too.
        const QString savedCurrent = QDir::currentPath();
        QVERIFY(QDir::setCurrent(dir.path()));
        const bool result = makeFolderPath(path.contains("%1") ? path.arg(dir.path()) : path);
        QDir::setCurrent(savedCurrent);

        QCOMPARE(result, made);
        for (const QString &folder : folders.split(' ', Qt::SkipEmptyParts))
            QVERIFY2(QFileInfo(dir.filePath(folder)).isDir(), qPrintable(folder));
        for (const QString &entry : missing.split(' ', Qt::SkipEmptyParts))
            QVERIFY2(!QFileInfo::exists(dir.filePath(entry)), qPrintable(entry));
        // What was there stays as it was.
        for (const QString &entry : present.split(' ', Qt::SkipEmptyParts)) {
            const QFileInfo info(dir.filePath(entry));
            QVERIFY(entry.endsWith('/') ? info.isDir() : info.isFile());
        }
    }
};

QTEST_GUILESS_MAIN(TestFormats)
#include "tst_formats.moc"
