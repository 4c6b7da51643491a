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
    void paintsCell_data()
    {
        const Cells row;
        // 0 and 100 percent: an empty bar and a full one; -5 and 150 show so.
        row("empty", "0", 3, "0");
        row("full", "100", 53, "100");
        row("below", "-5", 3, "0");
        row("above", "150", 53, "100");
        // Halves go to the even neighbour: of the percentage, and of the
        // bar's edge, the cell's left included (3 + 16.5 up to 20, 3 + 23.5
        // down to 26).
        row("half to even up", "45.5", 26, "46");
        row("half to even down", "12.5", 9, "12");
        row("blanks round a number, edge half up", " 33 ", 20, "33");
        row("edge half down", "47", 26, "47");
        for (const char *word : {"Waiting", "Stopped(45%)", "1.5 MB so far", "Wait 34 Seconds", ""})
            row(word, word, 0, "");
    }

    void paintsCell()
    {
        const auto [status, barRight, percent] = Cells::fetch();
        // The models follow the list as it opens, takes the link and changes.
        DownloadList list;
        DownloadListModel source(&list);
        GridModel model(&source, nullptr);
        list.open();
        QVERIFY(list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, nullptr));
        list.setField(list.childAt(1, 0), Field::Status, status);
        const QModelIndex index = model.index(0, int(Field::Status), model.index(0, 0));
        QCOMPARE(index.data(GridModel::ProgressRole).toString(), percent);
        if (percent.isEmpty())
            return;

        // The bar takes the system's highlight colour on its highlight-text
        // colour, the digits in the other colour on each; a selected cell is
        // grey with black digits and no bar. The font is not the default: the
        // cell takes the view's.
        const QColor bar = QGuiApplication::palette().color(QPalette::Highlight);
        const QColor field = QGuiApplication::palette().color(QPalette::HighlightedText);
        const QRect cell(3, 5, 50, 20), barRect(3, 5, barRight - 3, 20);
        const QFont font("Sans", 11);
        // The cell in one ground colour with the text centred in one ink, on a
        // magenta canvas that shows anything painted outside the cell.
        auto plainCell = [&](const QColor &ground, const QColor &ink, const QString &text) {
            QImage image(QSize(80, 32), QImage::Format_ARGB32_Premultiplied);
            image.fill(QColor(255, 0, 255));
            QPainter painter(&image);
            painter.fillRect(cell, ground);
            painter.setFont(font);
            painter.setPen(ink);
            painter.drawText(cell, Qt::AlignCenter | Qt::TextSingleLine, text);
            return image;
        };
        const QString text = percent + '%';
        QImage expected = plainCell(field, bar, text);
        // The bar shows, and the digits do.
        QVERIFY(bar != field && expected != plainCell(field, bar, {}));
        QPainter(&expected).drawImage(barRect, plainCell(bar, field, text), barRect);

        QStyleOptionViewItem option;
        option.rect = cell;
        option.font = font;
        // Unselected, then selected. Each painter ends with its statement,
        // before the image is compared; the canvas's cell is black until the
        // delegate covers all of it.
        for (const QImage &want : {expected, plainCell(QColor(189, 189, 189), Qt::black, text)}) {
            QImage image = plainCell(Qt::black, Qt::black, {});
            GridDelegate(nullptr).paint(std::make_unique<QPainter>(&image).get(), option, index);
            QCOMPARE(image, want);
            option.state |= QStyle::State_Selected;
        }
    }
};

QTEST_MAIN(TestProgressCell)
#include "tst_progresscell.moc"
