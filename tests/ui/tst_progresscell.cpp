#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/downloadlistmodel.h"
#include "ui/griddelegate.h"
#include "ui/gridmodel.h"
#include "ui/progresscellpainter.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QtTest>

// Paints a link's Status cell through the grid's delegate into an image and
// looks at the pixels: where the bar ends, which colour the digits take on
// either side of its edge, and the selected cell without a bar.
class TestProgressCell : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void paintsCell_data();
    void paintsCell();
    void barEdgeRounding_data();
    void barEdgeRounding();
    void percentOfStatus_data();
    void percentOfStatus();

private:
    // The cell as the delegate paints it, on a magenta canvas.
    QImage paintCell(const QString &status, bool selected);
    // The whole cell in one ground colour with the text centred in one ink.
    QImage plainCell(const QColor &ground, const QColor &ink, const QString &text) const;

    const QRect m_cell{10, 5, 150, 20};
    const QSize m_canvas{180, 32};
    const QColor m_canvasColour{255, 0, 255};
    QFont m_font;
    FakePrompts m_prompts;
    DownloadList m_list;
    std::unique_ptr<DownloadListModel> m_source;
    std::unique_ptr<GridModel> m_model;
};

void TestProgressCell::initTestCase()
{
    m_font = QApplication::font();
    m_font.setPixelSize(14);
    m_list.open();
    QVERIFY(m_list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, &m_prompts));
    m_source = std::make_unique<DownloadListModel>(&m_list);
    m_model = std::make_unique<GridModel>(m_source.get(), &m_prompts);
}

QImage TestProgressCell::paintCell(const QString &status, bool selected)
{
    m_list.setField(m_list.childAt(1, 0), Field::Status, status);
    const QModelIndex cell = m_model->index(0, int(Field::Status), m_model->index(0, 0));
    QStyleOptionViewItem option;
    option.rect = m_cell;
    option.font = m_font;
    option.state = QStyle::State_Enabled;
    if (selected)
        option.state |= QStyle::State_Selected;
    QImage image(m_canvas, QImage::Format_ARGB32_Premultiplied);
    image.fill(m_canvasColour);
    QPainter painter(&image);
    GridDelegate delegate(nullptr);
    delegate.paint(&painter, option, cell);
    return image;
}

QImage TestProgressCell::plainCell(const QColor &ground, const QColor &ink,
                                   const QString &text) const
{
    QImage image(m_canvas, QImage::Format_ARGB32_Premultiplied);
    image.fill(m_canvasColour);
    QPainter painter(&image);
    painter.fillRect(m_cell, ground);
    painter.setFont(m_font);
    painter.setPen(ink);
    painter.drawText(m_cell, Qt::AlignCenter | Qt::TextSingleLine, text);
    return image;
}

void TestProgressCell::paintsCell_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("selected");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("barWidth"); // pixels of the 150 wide cell
    QTest::newRow("0") << "0" << false << "0%" << 0;
    QTest::newRow("45.5") << "45.5" << false << "46%" << 69;
    QTest::newRow("100") << "100" << false << "100%" << 150;
    QTest::newRow("150") << "150" << false << "100%" << 150;
    QTest::newRow("-5") << "-5" << false << "0%" << 0;
    QTest::newRow("12.5") << "12.5" << false << "12%" << 18;
    QTest::newRow("selected 45.5") << "45.5" << true << "46%" << 0;
    QTest::newRow("selected 100") << "100" << true << "100%" << 0;
}

void TestProgressCell::paintsCell()
{
    QFETCH(QString, status);
    QFETCH(bool, selected);
    QFETCH(QString, text);
    QFETCH(int, barWidth);

    // The bar takes the system's highlight colour on its highlight-text colour;
    // a selected cell is its selected colours everywhere, with no bar.
    const QPalette system = QGuiApplication::palette();
    const QColor bar = system.color(QPalette::Active, QPalette::Highlight);
    const QColor field = system.color(QPalette::Active, QPalette::HighlightedText);
    QVERIFY(bar != field);
    const QImage overField =
        selected ? plainCell(QColor(189, 189, 189), Qt::black, text) : plainCell(field, bar, text);

    // The digits are field-coloured over the bar and bar-coloured over the
    // field, changing exactly at the bar's edge; nothing outside the cell.
    const QRect barRect(m_cell.topLeft(), QSize(barWidth, m_cell.height()));
    QImage expected = overField;
    QPainter(&expected).drawImage(barRect, plainCell(bar, field, text), barRect);
    const QImage image = paintCell(status, selected);
    QCOMPARE(image, expected);

    // The text is really there, on the side of the edge where it belongs.
    int inkOverBar = 0, inkOverField = 0;
    for (int y = m_cell.top(); y <= m_cell.bottom(); ++y) {
        for (int x = m_cell.left(); x <= m_cell.right(); ++x) {
            const bool onBar = barRect.contains(x, y);
            if (image.pixelColor(x, y) != overField.pixelColor(m_cell.right(), y) && !onBar)
                ++inkOverField;
            if (onBar && image.pixelColor(x, y) != bar)
                ++inkOverBar;
        }
    }
    QCOMPARE(inkOverBar > 0, barWidth > m_cell.width() / 2 - 10);
    QCOMPARE(inkOverField > 0, barWidth < m_cell.width() / 2 + 10);
}

void TestProgressCell::barEdgeRounding_data()
{
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("percent");
    QTest::addColumn<int>("right");
    QTest::newRow("empty") << 7 << 100 << 0 << 7;
    QTest::newRow("full") << 7 << 100 << 100 << 107;
    QTest::newRow("above") << 7 << 100 << 250 << 107;
    QTest::newRow("below") << 7 << 100 << -3 << 7;
    QTest::newRow("half down to even") << 0 << 50 << 45 << 22;
    QTest::newRow("half up to even") << 0 << 50 << 47 << 24;
    QTest::newRow("half with the left edge") << 3 << 50 << 45 << 26;
    QTest::newRow("plain") << 0 << 150 << 46 << 69;
    QTest::newRow("below half") << 0 << 33 << 10 << 3;
    QTest::newRow("above half") << 0 << 37 << 10 << 4;
}

void TestProgressCell::barEdgeRounding()
{
    QFETCH(int, left);
    QFETCH(int, width);
    QFETCH(int, percent);
    QFETCH(int, right);
    QCOMPARE(ProgressCellPainter::barRight(left, width, percent), right);
}

void TestProgressCell::percentOfStatus_data()
{
    QTest::addColumn<QString>("status");
    QTest::addColumn<int>("percent"); // -1: no bar
    QTest::newRow("zero") << "0" << 0;
    QTest::newRow("full") << "100" << 100;
    QTest::newRow("above") << "150" << 100;
    QTest::newRow("below") << "-5" << 0;
    QTest::newRow("fraction") << "45.67" << 46;
    QTest::newRow("half to even down") << "12.5" << 12;
    QTest::newRow("half to even up") << "13.5" << 14;
    QTest::newRow("blanks round a number") << " 33 " << 33;
    QTest::newRow("word") << "Waiting" << -1;
    QTest::newRow("stopped") << "Stopped(45%)" << -1;
    QTest::newRow("so far") << "1.5 MB so far" << -1;
    QTest::newRow("wait") << "Wait 34 Seconds" << -1;
    QTest::newRow("empty") << "" << -1;
}

void TestProgressCell::percentOfStatus()
{
    QFETCH(QString, status);
    QFETCH(int, percent);
    const std::optional<int> found = ProgressCellPainter::percentOf(status);
    QCOMPARE(found.value_or(-1), percent);
}

QTEST_MAIN(TestProgressCell)
#include "tst_progresscell.moc"
