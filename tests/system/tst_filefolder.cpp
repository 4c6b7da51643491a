#include "datatable.h"
#include "system/filefolder.h"

#include <QtTest>

// A path and its parts, "parent|base|extension".
using Names = Table<QString, QString>;

class TestFileFolder : public QObject
{
    Q_OBJECT
private slots:
    // In a folder with a file "a.txt", an empty file "empty.txt" and a folder
    // "sub": per path, is it a file, is it a folder. A folder is made one
    // level at a time and never over anything; only files are deleted, a
    // read-only one only with force.
    void onDisk()
    {
        using namespace FileFolder;
        QTemporaryDir dir;
        auto at = [&](const char *name) { return *name ? dir.filePath(name) : QString(); };
        QFile a(at("a.txt")), empty(at("empty.txt"));
        QVERIFY(a.open(QIODevice::WriteOnly) && a.write("data") == 4 && a.flush());
        QVERIFY(empty.open(QIODevice::WriteOnly) && QDir(dir.path()).mkdir("sub"));

        QStringList seen;
        for (const char *name : {"a.txt", "empty.txt", "sub", "sub/", "missing", ""})
            seen << QString("%1%2").arg(fileExists(at(name))).arg(folderExists(at(name)));
        QCOMPARE(seen.join(' '), "10 10 01 01 00 00");

        QVERIFY(QFile::setPermissions(at("a.txt"), QFile::ReadOwner | QFile::ReadGroup));
        QString results; // each call, in order, then what is left in the folder
        for (bool ok :
             {createFolder(at("new")), createFolder(at("new")), createFolder(at("gone/child")),
              createFolder(at("a.txt")), createFolder(QString()), deleteFile(at("empty.txt")),
              deleteFile(at("empty.txt")), deleteFile(at("sub")), deleteFile(at("a.txt"), false),
              deleteFile(at("a.txt"))})
            results += ok ? u'1' : u'0';
        const QDir folder(dir.path());
        const QStringList left = folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
        QCOMPARE(results + ' ' + left.join(' '), "1000010001 new sub");
    }

    // The name helpers never look at the disk.
    void names_data()
    {
        const Names row;
        row("two dots", "/home/u/archive.tar.gz", "/home/u|archive.tar|gz");
        row("final dot", "/d/readme_1.", "/d|readme_1|");
        row("dot file", "/d/.profile", "/d||profile");
        row("dot in folder only", "/d.x/readme", "/d.x|readme|");
        row("under the root", "/clip.avi", "/|clip|avi");
        row("root", "/", "||");
        row("name only", "clip.avi", "|clip|avi");
        row("doubled separators, one at the end", "/a//b.txt/", "/a|b|txt");
    }
    void names()
    {
        const auto [path, parts] = Names::fetch();
        QCOMPARE(FileFolder::parentFolderName(path) + '|' + FileFolder::baseName(path) + '|' +
                     FileFolder::extensionName(path),
                 parts);
    }
};

QTEST_GUILESS_MAIN(TestFileFolder)
#include "tst_filefolder.moc"
