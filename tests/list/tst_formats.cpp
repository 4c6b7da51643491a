#include "datatable.h"
#include "list/formats.h"

#include <QtTest>

namespace {
// Each row names its function: the list's display texts "size"
// (sizeToText, bytes in), "bytes" (textToSize, float out), "time"
// (secondsToTimeText) and "clean" (cleanFileName); and "unique"
// (uniqueLocalFileName) and "folder" (makeFolderPath), which work in a
// fresh temporary folder, "%1", that holds `files` first. The cells: the
// function, its input, the output expected and those files.
using Cases = Table<QString, QString, QString, QString>;
} // namespace

class TestFormats : public QObject
{
    Q_OBJECT
private slots:
    void formats_data()
    {
        const Cases table;
        const char *function = "size";
        auto row = [&](const QString &input, const char *output, const char *files = "") {
            QByteArray tag = input.left(40).toUtf8().replace('\r', "\\r").replace('\n', "\\n");
            tag =
                function + ('(' + tag.replace('\t', "\\t") + ')') + (*files ? " in " : "") + files;
            table(tag.constData(), function, input, output, files);
        };
        row("1024", "1 KB");
        row("1152", "1.12 KB"); // a tie goes to the even hundredth, down
        row("1408", "1.38 KB"); // and up
        row("1048575", "1024 KB");
        row("1048576", "1 MB");
        row("1073741824", ""); // exactly one GB has no text
        row("5905580032", "5.5 GB");

        function = "bytes";
        row("", "0");
        row("12 Bytes", "12");
        row("1 GB", "1073741824");
        row("2  KB", "0"); // a double blank leaves no unit
        row("  1.5 KB left  ", "1536");
        row("abc KB", "0");
        row("1e300 GB", "0");
        // Sizes written as text come back only as exact as their two decimals.
        row("117.74 MB", "123459336");

        function = "time";
        row("0.5", "00:00:01"); // below 61 a half rounds away from zero
        row("60.6", "00:00:61");
        row("61", "00:01:01");
        row("61.5", "00:01:02"); // from 61 on ties go to even, up
        row("62.5", "00:01:02"); // and down
        row("3599.5", "00:60:00");
        row("3600", "01:00:00");
        row("7199", "02:59:59"); // the hour follows the rounded minutes
        row("360000", "100:00:00");

        function = "clean";
        // Blanks left by a removal go too; tabs and other marks stay.
        row(": one, \"it's\" a\\b/c*<d>|?.avi :", "one its abcd.avi");
        row("a\r\nb\rc\nd", "abcd");
        row("\tMovie (2009) [HD]-x_y.mkv\t", "\tMovie (2009) [HD]-x_y.mkv\t");

        // The name found, then all the folder holds: nothing is made or
        // changed. "~" marks an empty file, "@" a link to a missing file.
        function = "unique";
        // A link is taken, an empty file is free.
        row("%1/clip.avi", "%1/clip_1.avi: clip.avi clip_1.avi", "@clip.avi ~clip_1.avi");
        // A word behind the "_" gains "_1"; a number counts up, the rest dropped.
        row("%1/my_file.avi", "%1/my_file_1_1.avi: my_file.avi my_file_1.avi",
            "my_file.avi my_file_1.avi");
        row("%1/a_32767_b.zip", "%1/a_32768.zip: a_32767_b.zip", "a_32767_b.zip");
        row("%1/v_2.5.zip", "%1/v_3.zip: v_2.5.zip", "v_2.5.zip"); // rounded to even
        // A name without extension gains a dot.
        row("%1/readme", "%1/readme_2.: readme readme_1.", "readme readme_1.");

        // Whether it was made, then all the folder holds; relative paths
        // land in the temporary folder too.
        function = "folder";
        row("ab", "0: ");
        row("///", "1: ");
        row("x//y/z/", "1: x x/y x/y/z");
        row("%1/kept/" + QString(300, 'n') + "/x", "0: kept"); // made levels remain
    }
    void formats()
    {
        const auto [function, input, output, files] = Cases::fetch();
        QTemporaryDir dir; // made current, as relative paths land there
        for (const QString &name : files.split(' ', Qt::SkipEmptyParts)) {
            QFile f(dir.filePath(name.mid(name.startsWith('~') || name.startsWith('@') ? 1 : 0)));
            QVERIFY(name.startsWith('@') ? QFile::link(dir.filePath("gone/x"), f.fileName())
                                         : f.open(QIODevice::WriteOnly) &&
                                               (name.startsWith('~') || f.write("data") == 4));
        }
        const QString savedCurrent = QDir::currentPath();
        QVERIFY(QDir::setCurrent(dir.path()));
        const QString path = QString(input).replace("%1", dir.path());
        // What a disk function gave, then all the folder holds, sorted.
        auto onDisk = [&](const QString &result) {
            QStringList entries;
            QDirIterator it(dir.path(), QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot,
                            QDirIterator::Subdirectories);
            while (it.hasNext())
                entries << it.next().mid(dir.path().size() + 1);
            entries.sort();
            return result + ": " + entries.join(' ');
        };
        const QString got = function == "size"     ? sizeToText(input.toLongLong())
                            : function == "bytes"  ? QString::number(textToSize(input), 'g', 9)
                            : function == "time"   ? secondsToTimeText(input.toFloat())
                            : function == "clean"  ? cleanFileName(input)
                            : function == "unique" ? onDisk(uniqueLocalFileName(path))
                                                   : onDisk(QString::number(makeFolderPath(path)));
        QDir::setCurrent(savedCurrent);
        // Sizes to the bit: QCOMPARE on floats is fuzzy.
        QCOMPARE(QString(got).replace(dir.path(), "%1"),
                 function == "bytes" ? QString::number(output.toFloat(), 'g', 9) : output);
    }
};

QTEST_GUILESS_MAIN(TestFormats)
#include "tst_formats.moc"
