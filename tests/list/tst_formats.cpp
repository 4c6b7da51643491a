#include "list/formats.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {
void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile f(path);
    QVERIFY2(f.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    f.write(bytes);
}
} // namespace

class TestFormats : public QObject
{
    Q_OBJECT
private slots:
    void sizes_data();
    void sizes();
    void textsToSizes_data();
    void textsToSizes();
    void sizeTextsReadBack_data();
    void sizeTextsReadBack();
    void times_data();
    void times();
    void cleanNames_data();
    void cleanNames();
    void uniqueNames_data();
    void uniqueNames();
    void folderPaths_data();
    void folderPaths();
};

void TestFormats::sizes_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("text");

    QTest::newRow("zero") << qint64(0) << "0 Bytes";
    QTest::newRow("negative") << qint64(-5) << "-5 Bytes";
    QTest::newRow("largest bytes") << qint64(1023) << "1023 Bytes";
    QTest::newRow("one KB") << qint64(1024) << "1 KB";
    QTest::newRow("one and a half KB") << qint64(1536) << "1.5 KB";
    QTest::newRow("two decimals") << qint64(1126) << "1.1 KB";
    QTest::newRow("tie to even, down") << qint64(1152) << "1.12 KB";
    QTest::newRow("tie to even, up") << qint64(1408) << "1.38 KB";
    QTest::newRow("just over a tie") << qint64(1153) << "1.13 KB";
    QTest::newRow("largest KB rounds up") << qint64(1048575) << "1024 KB";
    QTest::newRow("one MB") << qint64(1048576) << "1 MB";
    QTest::newRow("MB with decimals") << qint64(123456789) << "117.74 MB";
    QTest::newRow("largest MB") << qint64(1073741823) << "1024 MB";
    QTest::newRow("exactly one GB has no text") << qint64(1073741824) << "";
    QTest::newRow("just over one GB") << qint64(1073741825) << "1 GB";
    QTest::newRow("one and a half GB") << qint64(1610612736) << "1.5 GB";
    QTest::newRow("largest 32-bit") << qint64(2147483647) << "2 GB";
    QTest::newRow("beyond 32 bits") << qint64(5905580032) << "5.5 GB";
}

void TestFormats::sizes()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, text);
    QCOMPARE(sizeToText(bytes), text);
}

void TestFormats::textsToSizes_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<float>("size");

    QTest::newRow("MB") << "1.5 MB" << 1572864.0f;
    QTest::newRow("unknown size") << "?" << 0.0f;
    QTest::newRow("empty") << "" << 0.0f;
    QTest::newRow("bytes") << "12 Bytes" << 12.0f;
    QTest::newRow("KB") << "2 KB" << 2048.0f;
    QTest::newRow("GB") << "1 GB" << 1073741824.0f;
    QTest::newRow("unknown unit") << "3 TB" << 0.0f;
    QTest::newRow("unit case counts") << "2 kb" << 0.0f;
    QTest::newRow("outer blanks trimmed") << "  2 KB  " << 2048.0f;
    QTest::newRow("double blank leaves no unit") << "2  KB" << 0.0f;
    QTest::newRow("further parts ignored") << "1.5 KB left" << 1536.0f;
    QTest::newRow("not a number") << "abc KB" << 0.0f;
    QTest::newRow("no number") << " KB" << 0.0f;
    // Single precision drops the low digits of a large size.
    QTest::newRow("low digits lost") << "2047.99 MB" << 2147473152.0f;
    QTest::newRow("too large for a single") << "1e300 GB" << 0.0f;
}

void TestFormats::textsToSizes()
{
    QFETCH(QString, text);
    QFETCH(float, size);
    QCOMPARE(textToSize(text), size);
}

// A size goes into the list as text and comes back only as exact as the
// text's two decimals.
void TestFormats::sizeTextsReadBack_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<float>("size");

    QTest::newRow("exact") << qint64(1536) << 1536.0f;
    QTest::newRow("bytes") << qint64(700) << 700.0f;
    QTest::newRow("rounded KB") << qint64(1126) << 1126.4f;
    QTest::newRow("rounded MB") << qint64(123456789) << 123459336.0f;
    QTest::newRow("one GB is lost") << qint64(1073741824) << 0.0f;
}

void TestFormats::sizeTextsReadBack()
{
    QFETCH(qint64, bytes);
    QFETCH(float, size);
    QCOMPARE(textToSize(sizeToText(bytes)), size);
}

void TestFormats::times_data()
{
    QTest::addColumn<float>("seconds");
    QTest::addColumn<QString>("text");

    QTest::newRow("zero") << 0.0f << "00:00:00";
    QTest::newRow("five") << 5.0f << "00:00:05";
    QTest::newRow("half rounds away from zero") << 0.5f << "00:00:01";
    QTest::newRow("sixty stays seconds") << 60.0f << "00:00:60";
    QTest::newRow("just under 61") << 60.6f << "00:00:61";
    QTest::newRow("61") << 61.0f << "00:01:01";
    QTest::newRow("tie to even, up") << 61.5f << "00:01:02";
    QTest::newRow("tie to even, down") << 62.5f << "00:01:02";
    QTest::newRow("3599") << 3599.0f << "00:59:59";
    QTest::newRow("sixty minutes") << 3599.5f << "00:60:00";
    QTest::newRow("one hour") << 3600.0f << "01:00:00";
    QTest::newRow("minutes tie to even, down") << 3630.0f << "01:00:30";
    QTest::newRow("minutes tie to even, up") << 3690.0f << "01:01:30";
    QTest::newRow("hour ahead of minutes") << 5399.0f << "01:29:59";
    QTest::newRow("hour ahead at a tie") << 5370.0f << "01:29:30";
    QTest::newRow("hour not ahead at a tie") << 5430.0f << "01:30:30";
    QTest::newRow("7199 hour ahead") << 7199.0f << "02:59:59";
    QTest::newRow("two hours") << 7200.0f << "02:00:00";
    QTest::newRow("three-digit hours") << 360000.0f << "100:00:00";
}

void TestFormats::times()
{
    QFETCH(float, seconds);
    QFETCH(QString, text);
    QCOMPARE(secondsToTimeText(seconds), text);
}

void TestFormats::cleanNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("clean");

    QTest::newRow("colon, question mark, blanks") << " a:b?.zip "
                                                  << "ab.zip";
    QTest::newRow("slashes") << "x\\y/z.rar"
                             << "xyz.rar";
    QTest::newRow("quotes") << "\"it's\".txt"
                            << "its.txt";
    QTest::newRow("wildcards and redirects") << "a*<b>|c.avi"
                                             << "abc.avi";
    QTest::newRow("comma") << "one, two.mp3"
                           << "one two.mp3";
    QTest::newRow("line breaks") << "a\r\nb\rc\nd"
                                 << "abcd";
    QTest::newRow("blanks left by removal trimmed") << ": name :"
                                                    << "name";
    QTest::newRow("tabs stay") << "\tname\t"
                               << "\tname\t";
    QTest::newRow("only removed characters") << "?*:"
                                             << "";
    QTest::newRow("untouched") << "Movie (2009) [HD]-x_y.mkv"
                               << "Movie (2009) [HD]-x_y.mkv";
}

void TestFormats::cleanNames()
{
    QFETCH(QString, name);
    QFETCH(QString, clean);
    QCOMPARE(cleanFileName(name), clean);
}

void TestFormats::uniqueNames_data()
{
    QTest::addColumn<QStringList>("filled");
    QTest::addColumn<QStringList>("empty");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("unique");

    const QStringList none;
    QTest::newRow("free") << none << none << "clip.avi"
                          << "clip.avi";
    QTest::newRow("empty file is free") << none << QStringList{"clip.avi"} << "clip.avi"
                                        << "clip.avi";
    QTest::newRow("first copy") << QStringList{"clip.avi"} << none << "clip.avi"
                                << "clip_1.avi";
    QTest::newRow("second copy") << QStringList{"clip.avi", "clip_1.avi"} << none << "clip.avi"
                                 << "clip_2.avi";
    QTest::newRow("empty copy used")
        << QStringList{"clip.avi"} << QStringList{"clip_1.avi"} << "clip.avi"
        << "clip_1.avi";
    QTest::newRow("underscore name") << QStringList{"my_file.avi"} << none << "my_file.avi"
                                     << "my_file_1.avi";
    QTest::newRow("underscore name twice")
        << QStringList{"my_file.avi", "my_file_1.avi"} << none << "my_file.avi"
        << "my_file_1_1.avi";
    QTest::newRow("counter counts, rest dropped") << QStringList{"a_3_b.zip"} << none << "a_3_b.zip"
                                                  << "a_4.zip";
    QTest::newRow("counter counts twice")
        << QStringList{"a_3_b.zip", "a_4.zip"} << none << "a_3_b.zip"
        << "a_5.zip";
    QTest::newRow("counter without stem") << QStringList{"_7.zip"} << none << "_7.zip"
                                          << "_8.zip";
    QTest::newRow("decimal counter rounds to even")
        << QStringList{"v_2.5.zip"} << none << "v_2.5.zip"
        << "v_3.zip";
    QTest::newRow("counter past 16 bits") << QStringList{"a_32767.zip"} << none << "a_32767.zip"
                                          << "a_32768.zip";
    QTest::newRow("no extension gains a dot") << QStringList{"readme"} << none << "readme"
                                              << "readme_1.";
    QTest::newRow("no extension, second copy")
        << QStringList{"readme", "readme_1."} << none << "readme"
        << "readme_2.";
    QTest::newRow("last extension only")
        << QStringList{"archive.tar.gz"} << none << "archive.tar.gz"
        << "archive.tar_1.gz";
}

void TestFormats::uniqueNames()
{
    QFETCH(QStringList, filled);
    QFETCH(QStringList, empty);
    QFETCH(QString, name);
    QFETCH(QString, unique);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    for (const QString &file : filled)
        writeFile(dir.filePath(file), "data");
    for (const QString &file : empty)
        writeFile(dir.filePath(file), QByteArray());

    QCOMPARE(uniqueLocalFileName(dir.filePath(name)), dir.filePath(unique));
    // Nothing is created or changed on the way.
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), filled.size() + empty.size());
}

void TestFormats::folderPaths_data()
{
    // "%1" stands for a fresh temporary folder; "files" and "folders" exist
    // beforehand below it.
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QStringList>("folders");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("made");
    QTest::addColumn<QStringList>("existAfter");
    QTest::addColumn<QStringList>("missingAfter");

    const QStringList none;
    const QString tooLong(300, QLatin1Char('n'));

    QTest::newRow("empty") << none << none << "" << false << none << none;
    QTest::newRow("two characters") << none << none << "ab" << false << none << QStringList{"ab"};
    QTest::newRow("root") << none << none << "///" << true << none << none;
    QTest::newRow("one level") << none << none << "%1/new" << true << QStringList{"new"} << none;
    QTest::newRow("missing parents")
        << none << none << "%1/x/y/z" << true << QStringList{"x", "x/y", "x/y/z"} << none;
    QTest::newRow("existing folder")
        << none << QStringList{"old"} << "%1/old" << true << QStringList{"old"} << none;
    QTest::newRow("partly existing")
        << none << QStringList{"old"} << "%1/old/a/b" << true << QStringList{"old/a/b"} << none;
    QTest::newRow("separator at the end")
        << none << none << "%1/t/u/" << true << QStringList{"t/u"} << none;
    QTest::newRow("doubled separators")
        << none << none << "%1//p//q" << true << QStringList{"p/q"} << none;
    QTest::newRow("file in the way") << QStringList{"f.txt"} << none << "%1/f.txt/sub" << false
                                     << none << QStringList{"f.txt/sub"};
    QTest::newRow("file at the end")
        << QStringList{"f.txt"} << none << "%1/f.txt" << false << none << none;
    QTest::newRow("made levels remain") << none << none << "%1/kept/" + tooLong + "/x" << false
                                        << QStringList{"kept"} << QStringList{"kept/x"};
}

void TestFormats::folderPaths()
{
    QFETCH(QStringList, files);
    QFETCH(QStringList, folders);
    QFETCH(QString, path);
    QFETCH(bool, made);
    QFETCH(QStringList, existAfter);
    QFETCH(QStringList, missingAfter);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    // Relative paths land in the temporary folder too.
    const QString savedCurrent = QDir::currentPath();
    QVERIFY(QDir::setCurrent(dir.path()));
    for (const QString &folder : folders)
        QVERIFY(QDir(dir.path()).mkpath(folder));
    for (const QString &file : files)
        writeFile(dir.filePath(file), "data");

    const bool result = makeFolderPath(path.contains("%1") ? path.arg(dir.path()) : path);
    QDir::setCurrent(savedCurrent);

    QCOMPARE(result, made);
    for (const QString &folder : existAfter)
        QVERIFY2(QFileInfo(dir.filePath(folder)).isDir(), qPrintable(folder));
    for (const QString &entry : missingAfter)
        QVERIFY2(!QFileInfo::exists(dir.filePath(entry)), qPrintable(entry));
    for (const QString &file : files)
        QVERIFY2(QFileInfo(dir.filePath(file)).isFile(), qPrintable(file));
}

QTEST_GUILESS_MAIN(TestFormats)
#include "tst_formats.moc"
