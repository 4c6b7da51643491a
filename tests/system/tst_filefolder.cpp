#include "system/filefolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestFileFolder : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void existence();
    void createFolder();
    void deleteFile();
    void names_data();
    void names();

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString path(const QString &relative) const { return m_dir->filePath(relative); }
    void makeFile(const QString &relative, const QByteArray &bytes = "data");
};

void TestFileFolder::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestFileFolder::makeFile(const QString &relative, const QByteArray &bytes)
{
    QFile f(path(relative));
    QVERIFY(f.open(QIODevice::WriteOnly));
    f.write(bytes);
}

void TestFileFolder::existence()
{
    makeFile("a.txt");
    makeFile("empty.txt", QByteArray());
    QVERIFY(QDir(m_dir->path()).mkdir("sub"));

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

void TestFileFolder::createFolder()
{
    makeFile("f.txt");

    QVERIFY(FileFolder::createFolder(path("new")));
    QVERIFY(QFileInfo(path("new")).isDir());
    // Once made, it exists: a second create fails.
    QVERIFY(!FileFolder::createFolder(path("new")));
    // One level only: the parent must be there.
    QVERIFY(!FileFolder::createFolder(path("gone/child")));
    QVERIFY(!QFileInfo::exists(path("gone")));
    QVERIFY(!FileFolder::createFolder(path("f.txt")));
    QVERIFY(QFileInfo(path("f.txt")).isFile());
    QVERIFY(!FileFolder::createFolder(QString()));
}

void TestFileFolder::deleteFile()
{
    makeFile("plain.txt");
    makeFile("locked.txt");
    QVERIFY(QDir(m_dir->path()).mkdir("sub"));
    QVERIFY(
        QFile::setPermissions(path("locked.txt"), QFileDevice::ReadOwner | QFileDevice::ReadGroup));

    QVERIFY(FileFolder::deleteFile(path("plain.txt")));
    QVERIFY(!QFileInfo::exists(path("plain.txt")));
    QVERIFY(!FileFolder::deleteFile(path("plain.txt")));
    QVERIFY(!FileFolder::deleteFile(path("sub")));
    QVERIFY(QFileInfo(path("sub")).isDir());

    // A read-only file stays without force and goes with it.
    QVERIFY(!FileFolder::deleteFile(path("locked.txt"), false));
    QVERIFY(QFileInfo::exists(path("locked.txt")));
    QVERIFY(FileFolder::deleteFile(path("locked.txt")));
    QVERIFY(!QFileInfo::exists(path("locked.txt")));
}

void TestFileFolder::names_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("parent");
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("extension");

    QTest::newRow("full path") << "/home/u/clip.avi"
                               << "/home/u"
                               << "clip"
                               << "avi";
    QTest::newRow("two dots") << "/d/archive.tar.gz"
                              << "/d"
                              << "archive.tar"
                              << "gz";
    QTest::newRow("no extension") << "/d/readme"
                                  << "/d"
                                  << "readme"
                                  << "";
    QTest::newRow("final dot") << "/d/readme_1."
                               << "/d"
                               << "readme_1"
                               << "";
    QTest::newRow("dot file") << "/d/.profile"
                              << "/d"
                              << ""
                              << "profile";
    QTest::newRow("dot in folder only") << "/d.x/readme"
                                        << "/d.x"
                                        << "readme"
                                        << "";
    QTest::newRow("under the root") << "/clip.avi"
                                    << "/"
                                    << "clip"
                                    << "avi";
    QTest::newRow("root") << "/"
                          << ""
                          << ""
                          << "";
    QTest::newRow("name only") << "clip.avi"
                               << ""
                               << "clip"
                               << "avi";
    QTest::newRow("relative") << "a/b/c.txt"
                              << "a/b"
                              << "c"
                              << "txt";
    QTest::newRow("separator at the end") << "/a/b/"
                                          << "/a"
                                          << "b"
                                          << "";
    QTest::newRow("doubled separators") << "/a//b.txt"
                                        << "/a"
                                        << "b"
                                        << "txt";
    QTest::newRow("empty") << ""
                           << ""
                           << ""
                           << "";
}

void TestFileFolder::names()
{
    QFETCH(QString, path);
    QFETCH(QString, parent);
    QFETCH(QString, base);
    QFETCH(QString, extension);

    QCOMPARE(FileFolder::parentFolderName(path), parent);
    QCOMPARE(FileFolder::baseName(path), base);
    QCOMPARE(FileFolder::extensionName(path), extension);
}

QTEST_GUILESS_MAIN(TestFileFolder)
#include "tst_filefolder.moc"
