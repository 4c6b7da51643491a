#include "transfer/bytesearch.h"

#include <QRandomGenerator>
#include <QtTest>

namespace {

// The plain definition, one start after another, for comparison.
qsizetype naiveIndex(const QByteArray &hay, const QByteArray &needle, qsizetype from)
{
    const QByteArray h = hay.toLower(), n = needle.toLower();
    for (qsizetype i = std::max<qsizetype>(from, 0); i + n.size() <= h.size(); ++i) {
        if (h.mid(i, n.size()) == n)
            return i;
    }
    return -1;
}

} // namespace

class TestByteSearch : public QObject
{
    Q_OBJECT
private slots:
    void indexOfNoCase_data()
    {
        QTest::addColumn<QByteArray>("hay");
        QTest::addColumn<QByteArray>("needle");
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("expected");
        QTest::newRow("mixed case")
            << QByteArray("HTTP/1.1 302 FOUND\r\n") << QByteArray("302 found") << 0 << 9;
        QTest::newRow("letters only needle")
            << QByteArray("xxLoCaTiOn:") << QByteArray("location:") << 0 << 2;
        QTest::newRow("at the very end")
            << QByteArray(40, 'a') + "200 OK" << QByteArray("200 ok") << 0 << 40;
        QTest::newRow("from behind the first")
            << QByteArray("ab ab ab") << QByteArray("AB") << 1 << 3;
        QTest::newRow("not there") << QByteArray(100, 'x') << QByteArray("xy") << 0 << -1;
        QTest::newRow("only non-letters fold nothing")
            << QByteArray("[@]{`}") << QByteArray("{`}") << 0 << 3;
        QTest::newRow("'@' is no 'A'") << QByteArray(20, '@') << QByteArray("`a") << 0 << -1;
        QTest::newRow("needle longer") << QByteArray("ab") << QByteArray("abc") << 0 << -1;
    }
    void indexOfNoCase()
    {
        QFETCH(QByteArray, hay);
        QFETCH(QByteArray, needle);
        QFETCH(int, from);
        QFETCH(int, expected);
        QCOMPARE(int(::indexOfNoCase(hay, needle, from)), expected);
    }

    void randomAgainstPlainSearch()
    {
        // Small alphabets make many near misses across the 16-byte blocks.
        QRandomGenerator rng(12345);
        const QByteArray alphabet = "aAbB0 3";
        for (int round = 0; round < 3000; ++round) {
            QByteArray hay(rng.bounded(0, 90), '\0');
            for (char &c : hay)
                c = alphabet.at(rng.bounded(alphabet.size()));
            QByteArray needle(rng.bounded(1, 5), '\0');
            for (char &c : needle)
                c = alphabet.at(rng.bounded(alphabet.size()));
            const int from = rng.bounded(0, 20);
            QCOMPARE(::indexOfNoCase(hay, needle, from), naiveIndex(hay, needle, from));

            const QByteArrayView needles[3] = {"303 see other", "302 found", "200 ok"};
            const QByteArray words[3] = {"303 see other", "302 FOUND", "200 Ok"};
            const int pick = rng.bounded(4);
            if (pick < 3)
                hay.insert(rng.bounded(hay.size() + 1), words[pick]);
            bool found[3];
            containsEachNoCase(hay, needles, 3, found);
            for (int k = 0; k < 3; ++k)
                QCOMPARE(found[k], naiveIndex(hay, needles[k].toByteArray(), 0) >= 0);
        }
    }
};

QTEST_GUILESS_MAIN(TestByteSearch)
#include "tst_bytesearch.moc"
