#include "transfer/bytesearch.h"

#include <QRandomGenerator>
#include <QtTest>

class TestByteSearch : public QObject
{
    Q_OBJECT
private slots:
    void indexOfNoCase_data()
    {
        QTest::addColumn<QByteArray>("hay");
        QTest::addColumn<QByteArray>("needle");
        QTest::addColumn<int>("expected"); // searched from 1
        QTest::newRow("status line")
            << QByteArray("HTTP/1.1 302 FOUND\r\n") << QByteArray("302 found") << 9;
        QTest::newRow("behind the 16-byte blocks")
            << QByteArray(40, 'a') + "200 OK" << QByteArray("200 ok") << 40;
        QTest::newRow("from behind the first") << QByteArray("ab ab ab") << QByteArray("AB") << 3;
        // The neighbours of the letters in ASCII fold to nothing, also in a block.
        QTest::newRow("[@] is no {`}") << QByteArray("x[@]{`}") << QByteArray("{`}") << 4;
        QTest::newRow("{`} is no [@]")
            << QByteArray("x{`}[@]") + QByteArray(20, 'x') << QByteArray("[@]") << 4;
        QTest::newRow("'@' is no '`'") << QByteArray(20, '@') << QByteArray("`") << -1;
    }
    void indexOfNoCase()
    {
        QFETCH(QByteArray, hay);
        QFETCH(QByteArray, needle);
        QFETCH(int, expected);
        QCOMPARE(int(::indexOfNoCase(hay, needle, 1)), expected);
    }

    void randomAgainstPlainSearch()
    {
        // Small alphabets make many near misses across the 16-byte blocks;
        // the plain search of the lower-cased bytes is the reference.
        QRandomGenerator rng(12345);
        auto random = [&rng](int size) {
            QByteArray bytes;
            while (bytes.size() < size)
                bytes += "aAbB0 3"[rng.bounded(7)];
            return bytes;
        };
        const QByteArrayView needles[3] = {"303 see other", "302 found", "200 ok"};
        const QByteArray words[3] = {"303 see other", "302 FOUND", "200 Ok"};
        for (int round = 0; round < 3000; ++round) {
            QByteArray hay = random(rng.bounded(0, 90));
            const QByteArray needle = random(rng.bounded(1, 5));
            const int from = rng.bounded(0, 20);
            QCOMPARE(::indexOfNoCase(hay, needle, from),
                     hay.toLower().indexOf(needle.toLower(), from));

            const int pick = rng.bounded(4);
            if (pick < 3)
                hay.insert(rng.bounded(hay.size() + 1), words[pick]);
            bool found[3];
            containsEachNoCase(hay, needles, 3, found);
            for (int k = 0; k < 3; ++k)
                QCOMPARE(found[k], hay.toLower().contains(needles[k]));
        }
    }
};

QTEST_GUILESS_MAIN(TestByteSearch)
#include "tst_bytesearch.moc"
