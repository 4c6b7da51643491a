#pragma once

#include "failurematrix.h"
#include "recipeharness.h"
#include "sandbox.h"

#include <QtTest>

// What a recipe's test reads without a socket, as one table: each row gives
// the page, what the reader makes of it as one text ("fails" for a run-time
// failure) and what else it reads (a link, the row's address before), which
// the rows after share unless a row gives its own; `reader` names the reader
// of the rows that follow.
//
//     void reading_data()
//     {
//         ReadingRows row("form");
//         row("gone", FakeX::gonePage, "Status=Not Found; ...");
//         row.reader = "post";
//         row("no link", "<p>x</p>", "Status=Error; ...", "http://h/link");
//     }
//     void reading() { ReadingRows::check([](auto &reader, auto &page, auto &extra) {...}); }
class ReadingRows
{
public:
    explicit ReadingRows(const QString &firstReader) : reader(firstReader)
    {
        for (const char *column : {"reader", "page", "extra", "expected"})
            QTest::addColumn<QString>(column);
    }
    void operator()(const char *name, const QString &page, const QString &expected,
                    const QString &ownExtra = {}) const
    {
        QTest::addRow("%s: %s", qPrintable(reader), name)
            << reader << page << (ownExtra.isNull() ? extra : ownExtra) << expected;
    }
    // `read(reader, page, extra)` gives the reading as one text.
    template <typename Read> static void check(const Read &read)
    {
        QFETCH(QString, reader);
        QFETCH(QString, page);
        QFETCH(QString, extra);
        QFETCH(QString, expected);
        QString got = QStringLiteral("fails");
        ignoreFailure([&] { got = read(reader, page, extra); });
        QCOMPARE(got, expected);
    }

    QString reader;
    QString extra = QStringLiteral("");
};
