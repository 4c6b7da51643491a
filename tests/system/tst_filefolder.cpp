#include "system/filefolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestFileFolder : public QObject
{
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> m_dir;
    QString path(const QString &relative) const { return m_dir->filePath(relative); }

private slots:
    // Each test starts with a file "a.txt", an empty file "empty.txt" and a
    // folder "sub".
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        QFile a(path("a.txt")), empty(path("empty.txt"));
        QVERIFY(a.open(QIODevice::WriteOnly) && a.write("data") == 4);
        QVERIFY(empty.open(QIODevice::WriteOnly));
        QVERIFY(QDir(m_dir->path()).mkdir("sub"));
    }

    void existence()
    {
        QVERIFY(FileFolder::fileExists(path("a.txt")));
        QVERIFY(FileFolder::fileExists(path("empty.txt")));
        QVERIFY(!FileFolder::fileExists(path("sub")));
        QVERIFY(!FileFolder::fileExists(path("missing.txt")));
        QVERIFY(!FileFolder::fileExists(QString()));

        QVERIFY(FileFolder::folderExists(path("sub")));
        QVERIFY(FileFolder::folderExists(path("sub/")));
        QVERIFY(!FileFolder::folderExists(path("a.txt")));
        QVERIFY(!FileFolder::folderExists(path("missing")));
        QVERIFY(!FileFolder::folderExists(QString()));
    }

    void createFolder()
    {
        QVERIFY(FileFolder::createFolder(path("new")));
        QVERIFY(QFileInfo(path("new")).isDir());
        // Once made, it exists: a second create fails.
        QVERIFY(!FileFolder::createFolder(path("new")));
        // One level only: the parent must be there.
        QVERIFY(!FileFolder::createFolder(path("gone/child")));
        QVERIFY(!QFileInfo::exists(path("gone")));
        QVERIFY(!FileFolder::createFolder(path("a.txt")));
        QVERIFY(QFileInfo(path("a.txt")).isFile());
        QVERIFY(!FileFolder::createFolder(QString()));
    }

    void deleteFile()
    {
        QVERIFY(FileFolder::deleteFile(path("empty.txt")));
        QVERIFY(!QFileInfo::exists(path("empty.txt")));
        QVERIFY(!FileFolder::deleteFile(path("empty.txt")));
        QVERIFY(!FileFolder::deleteFile(path("sub")));
        QVERIFY(QFileInfo(path("sub")).isDir());

        // A read-only file stays without force and goes with it.
        QVERIFY(QFile::setPermissions(path("a.txt"), QFile::ReadOwner | QFile::ReadGroup));
        QVERIFY(!FileFolder::deleteFile(path("a.txt"), false));
        QVERIFY(QFileInfo::exists(path("a.txt")));
        QVERIFY(FileFolder::deleteFile(path("a.txt")));
        QVERIFY(!QFileInfo::exists(path("a.txt")));
    }

    // The name helpers never look at the disk.
    void names_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("parent");
        QTest::addColumn<QString>("base");
        QTest::addColumn<QString>("extension");
        auto row = [](const char *tag, const char *path, const char *parent, const char *base,
                      const char *extension) {
            QTest::newRow(tag) << QString(path) << QString(parent) << QString(base)
                               << QString(extension);
        };
        row("full path", "/home/u/clip.avi", "/home/u", "clip", "avi");
        row("two dots", "/d/archive.tar.gz", "/d", "archive.tar", "gz");
        row("no extension", "/d/readme", "/d", "readme", "");
        row("final dot", "/d/readme_1.", "/d", "readme_1", "");
        row("dot file", "/d/.profile", "/d", "", "profile");
        row("dot in folder only", "/d.x/readme", "/d.x", "readme", "");
        row("under the root", "/clip.avi", "/", "clip", "avi");
        row("root", "/", "", "", "");
        row("name only", "clip.avi", "", "clip", "avi");
        row("relative", "a/b/c.txt", "a/b", "c", "txt");
        row("separator at the end", "/a/b/", "/a", "b", "");
        row("doubled separators", "/a//b.txt", "/a", "b", "txt");
        row("empty", "", "", "", "");
    }
    void names()
    {
        QFETCH(QString, path);
        QFETCH(QString, parent);
        QFETCH(QString, base);
        QFETCH(QString, extension);
        QCOMPARE(FileFolder::parentFolderName(path), parent);
        QCOMPARE(FileFolder::baseName(path), base);
        QCOMPARE(FileFolder::extensionName(path), extension);
    }
};

QTEST_GUILESS_MAIN(TestFileFolder)
#include "tst_filefolder.moc"
