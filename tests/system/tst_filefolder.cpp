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
        QTemporaryDir dir;
        auto path = [&](const char *name) { return *name ? dir.filePath(name) : QString(); };
        // The files, then the folders.
        auto listing = [&] {
            const QDir d(dir.path());
            return d.entryList(QDir::Files).join(' ') + " / " +
                   d.entryList(QDir::Dirs | QDir::NoDotAndDotDot).join(' ');
        };
        QFile a(path("a.txt")), empty(path("empty.txt"));
        QVERIFY(a.open(QIODevice::WriteOnly) && a.write("data") == 4);
        QVERIFY(empty.open(QIODevice::WriteOnly) && QDir(dir.path()).mkdir("sub"));
        a.close();
        empty.close();

        QStringList seen;
        for (const char *name : {"a.txt", "empty.txt", "sub", "sub/", "missing", ""})
            seen << QString("%1%2")
                        .arg(FileFolder::fileExists(path(name)))
                        .arg(FileFolder::folderExists(path(name)));
        QCOMPARE(seen.join(' '), "10 10 01 01 00 00");

        QVERIFY(QFile::setPermissions(path("a.txt"), QFile::ReadOwner | QFile::ReadGroup));
        QString results; // each call, in order
        for (bool ok :
             {FileFolder::createFolder(path("new")), FileFolder::createFolder(path("new")),
              FileFolder::createFolder(path("gone/child")), FileFolder::createFolder(path("a.txt")),
              FileFolder::createFolder(QString()), FileFolder::deleteFile(path("empty.txt")),
              FileFolder::deleteFile(path("empty.txt")), FileFolder::deleteFile(path("sub")),
              FileFolder::deleteFile(path("a.txt"), false)})
            results += ok ? u'1' : u'0';
        QCOMPARE(results + ' ' + listing(), "100001000 a.txt / new sub");
        QVERIFY(FileFolder::deleteFile(path("a.txt")));
        QCOMPARE(listing(), " / new sub");
    }

    // The name helpers never look at the disk.
    void names_data()
    {
        const Names row;
        row("full path", "/home/u/clip.avi", "/home/u|clip|avi");
        row("two dots", "/d/archive.tar.gz", "/d|archive.tar|gz");
        row("no extension", "/d/readme", "/d|readme|");
        row("final dot", "/d/readme_1.", "/d|readme_1|");
        row("dot file", "/d/.profile", "/d||profile");
        row("dot in folder only", "/d.x/readme", "/d.x|readme|");
        row("under the root", "/clip.avi", "/|clip|avi");
        row("root", "/", "||");
        row("name only", "clip.avi", "|clip|avi");
        row("separator at the end", "/a/b/", "/a|b|");
        row("doubled separators", "/a//b.txt", "/a|b|txt");
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
