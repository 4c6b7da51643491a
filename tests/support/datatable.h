#pragma once

#include <QtTest>

#include <tuple>

// A _data table of one column: each row's cells as a tuple, fetched whole, so
// a table of many columns is written one row a line.
template <typename... T> struct Table
{
    using Row = std::tuple<T...>;
    Table() { QTest::addColumn<Row>("row"); }
    void operator()(const char *name, const T &...c) const { QTest::newRow(name) << Row(c...); }
    // The current row, as QFETCH(Row, row) would give it.
    static Row fetch() { return *static_cast<Row *>(QTest::qData("row", qMetaTypeId<Row>())); }
};
