#include "datatable.h"
#include "list/downloadlistmodel.h"
#include "ui/griddelegate.h"
#include "ui/gridmodel.h"

#include <QPainter>
#include <QtTest>

// Each status in a cell 50 pixels wide whose left is 3: the bar's right edge
// and the shown percentage ("" when the status is no progress).
using Cells = Table<QString, int, QString>;

// Paints a link's Status cell through the grid's model and delegate into an
// image and compares it pixel for pixel with the cell drawn by hand: where the
// bar ends, which colour the digits take on either side of its edge, and the
// selected cell without a bar.
class TestProgressCell : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase()
    {
        m_list.open();
        QVERIFY(m_list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, nullptr));
    }

    void paintsCell_data()
    {
        const Cells row;
        row("below", "-5", 3, "0");
        row("above", "150", 53, "100");
        row("fraction", "45.67", 26, "46");
        // Halves go to the even neighbour: of the percentage, and of the
        // bar's edge, the cell's left included (3 + 16.5 up to 20, 3 + 23.5
        // down to 26).
        row("blanks round a number, edge half up", " 33 ", 20, "33");
        row("half to even down", "12.5", 9, "12");
        row("half to even up", "13.5", 10, "14");
        row("edge half down", "47", 26, "47");
        for (const char *word : {"Waiting", "Stopped(45%)", "1.5 MB so far", "Wait 34 Seconds", ""})
            row(word, word, 0, "");
    }

    void paintsCell()
    {
        const auto [status, barRight, percent] = Cells::fetch();
        m_list.setField(m_list.childAt(1, 0), Field::Status, status);
        const QModelIndex index = m_model.index(0, int(Field::Status), m_model.index(0, 0));
        QCOMPARE(index.data(GridModel::ProgressRole).toString(), percent);
        if (percent.isEmpty())
            return;

        // The bar takes the system's highlight colour on its highlight-text
        // colour, the digits in the other colour on each; a selected cell is
        // grey with black digits and no bar. Nothing is painted outside the cell.
        const QColor bar = QGuiApplication::palette().color(QPalette::Highlight);
        const QColor field = QGuiApplication::palette().color(QPalette::HighlightedText);
        const QRect cell(3, 5, 50, 20), barRect(3, 5, barRight - 3, 20);
        const QString text = percent + '%';
        QImage expected = plainCell(cell, field, bar, text);
        // The bar shows, and the digits do.
        QVERIFY(bar != field && expected != plainCell(cell, field, bar, {}));
        QPainter(&expected).drawImage(barRect, plainCell(cell, bar, field, text), barRect);

        for (const bool selected : {false, true}) {
            QImage image = plainCell({}, Qt::black, Qt::black, {}); // the bare canvas
            QStyleOptionViewItem option;
            option.rect = cell;
            option.font = m_font;
            option.state.setFlag(QStyle::State_Selected, selected);
            // The painter ends with the statement, before the image is compared.
            GridDelegate(nullptr).paint(std::make_unique<QPainter>(&image).get(), option, index);
            QCOMPARE(image,
                     selected ? plainCell(cell, QColor(189, 189, 189), Qt::black, text) : expected);
        }
    }

private:
    // The cell in one ground colour with the text centred in one ink, on a
    // magenta canvas that shows anything painted outside the cell.
    QImage plainCell(const QRect &cell, const QColor &ground, const QColor &ink,
                     const QString &text) const
    {
        QImage image(QSize(80, 32), QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(255, 0, 255));
        QPainter painter(&image);
        painter.fillRect(cell, ground);
        painter.setFont(m_font);
        painter.setPen(ink);
        painter.drawText(cell, Qt::AlignCenter | Qt::TextSingleLine, text);
        return image;
    }

    QFont m_font{"Sans", 11}; // not the default font: the cell takes the view's
    DownloadList m_list;
    DownloadListModel m_source{&m_list};
    GridModel m_model{&m_source, nullptr};
};

QTEST_MAIN(TestProgressCell)
#include "tst_progresscell.moc"
