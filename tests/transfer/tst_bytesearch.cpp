#include "transfer/bytesearch.h"

#include <QRandomGenerator>
#include <QtTest>

class TestByteSearch : public QObject
{
    Q_OBJECT
private slots:
    void randomAgainstPlainSearch()
    {
        // Small alphabets make many near misses across the 16-byte blocks
        // and their tails, from any start; the letters' neighbours in ASCII
        // are among them. The plain search of the lower-cased bytes gives
        // the answers.
        QRandomGenerator rng(12345);
        auto random = [&rng](int size) {
            QByteArray bytes;
            while (bytes.size() < size)
                bytes += "aAbB0 3@`[{"[rng.bounded(11)];
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

            // Now and then one of the words goes in, in a case of its own.
            if (const int pick = rng.bounded(4); pick < 3)
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
