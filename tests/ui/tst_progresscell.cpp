#include "list/downloadlist.h"
#include "list/downloadlistmodel.h"
#include "ui/griddelegate.h"
#include "ui/gridmodel.h"

#include <QApplication>
#include <QPainter>
#include <QtTest>

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
        m_font.setPixelSize(14);
        m_list.open();
        QVERIFY(m_list.addLinkToList("http://rapidshare.com/files/1/a.zip", 1, nullptr));
    }

    void paintsCell_data()
    {
        QTest::addColumn<QString>("status");
        QTest::addColumn<QRect>("cell");
        QTest::addColumn<bool>("selected");
        QTest::addColumn<int>("percent"); // -1: no bar, the cell is no progress
        QTest::addColumn<int>("barRight");
        auto row = [](const char *name, const QString &status, int left, int width, int percent,
                      int barRight, bool selected = false) {
            QTest::newRow(name) << status << QRect(left, 5, width, 20) << selected << percent
                                << barRight;
        };
        row("zero", "0", 10, 150, 0, 10);
        row("full", "100", 10, 150, 100, 160);
        row("above", "150", 10, 150, 100, 160);
        row("below", "-5", 10, 150, 0, 10);
        row("fraction", "45.67", 0, 150, 46, 69);
        row("blanks round a number", " 33 ", 10, 150, 33, 60);
        // Halves go to the even neighbour: of the percentage, and of the
        // bar's edge, the cell's left included.
        row("half to even down", "12.5", 10, 150, 12, 28);
        row("half to even up", "13.5", 10, 150, 14, 31);
        row("edge half down", "45", 0, 50, 45, 22);
        row("edge half up", "47", 0, 50, 47, 24);
        row("edge half with the left", "45", 3, 50, 45, 26);
        row("edge below half", "10", 0, 33, 10, 3);
        row("edge above half", "10", 0, 37, 10, 4);
        row("selected", "45.5", 10, 150, 46, 10, true);
        row("selected full", "100", 10, 150, 100, 10, true);
        for (const char *word : {"Waiting", "Stopped(45%)", "1.5 MB so far", "Wait 34 Seconds", ""})
            row(word, word, 10, 150, -1, 0);
    }

    void paintsCell()
    {
        QFETCH(QString, status);
        QFETCH(QRect, cell);
        QFETCH(bool, selected);
        QFETCH(int, percent);
        QFETCH(int, barRight);
        m_list.setField(m_list.childAt(1, 0), Field::Status, status);
        const QModelIndex index = m_model.index(0, int(Field::Status), m_model.index(0, 0));
        const QVariant progress = index.data(GridModel::ProgressRole);
        QCOMPARE(progress.isValid() ? progress.toInt() : -1, percent);
        if (percent < 0)
            return;

        // The bar takes the system's highlight colour on its highlight-text
        // colour, the digits in the other colour on each; a selected cell is
        // grey with black digits and no bar. Nothing is painted outside the cell.
        const QColor bar = QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight);
        const QColor field =
            QGuiApplication::palette().color(QPalette::Active, QPalette::HighlightedText);
        const QString text = QString::number(percent) + '%';
        QImage expected = plainCell(cell, selected ? QColor(189, 189, 189) : field,
                                    selected ? Qt::black : bar, text);
        const QRect barRect(cell.topLeft(), QSize(barRight - cell.left(), cell.height()));
        QPainter(&expected).drawImage(barRect, plainCell(cell, bar, field, text), barRect);
        // The bar shows, and the digits do.
        QVERIFY(bar != field &&
                plainCell(cell, field, bar, text) != plainCell(cell, field, bar, {}));

        QImage image = plainCell(QRect(), Qt::black, Qt::black, QString()); // the bare canvas
        QStyleOptionViewItem option;
        option.rect = cell;
        option.font = m_font;
        option.state =
            QStyle::State_Enabled | (selected ? QStyle::State_Selected : QStyle::State_None);
        QPainter painter(&image);
        GridDelegate(nullptr).paint(&painter, option, index);
        painter.end();
        QCOMPARE(image, expected);
    }

private:
    // The cell in one ground colour with the text centred in one ink, on a
    // magenta canvas that shows anything painted outside the cell.
    QImage plainCell(const QRect &cell, const QColor &ground, const QColor &ink,
                     const QString &text) const
    {
        QImage image(QSize(180, 32), QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(255, 0, 255));
        QPainter painter(&image);
        painter.fillRect(cell, ground);
        painter.setFont(m_font);
        painter.setPen(ink);
        painter.drawText(cell, Qt::AlignCenter | Qt::TextSingleLine, text);
        return image;
    }

    QFont m_font = QApplication::font();
    DownloadList m_list;
    DownloadListModel m_source{&m_list};
    GridModel m_model{&m_source, nullptr};
};

QTEST_MAIN(TestProgressCell)
#include "tst_progresscell.moc"
