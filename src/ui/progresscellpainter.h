#pragma once

#include <QColor>
#include <QFont>
#include <QRect>
#include <QString>
#include <optional>

class QPainter;

// Paints a link's numeric status as a progress bar with its percentage:
// the bar colour from the cell's left edge up to P percent of its width on
// the field colour, "P%" centred, drawn in the bar colour over the field and
// in the field colour over the bar, so that the digits change colour exactly
// at the bar's edge. A selected cell has no bar: it is the selected back
// colour with "P%" in the selected text colour.
class ProgressCellPainter
{
public:
    struct Colours
    {
        QColor bar;          // the bar, and the text over the bare field
        QColor field;        // the ground, and the text over the bar
        QColor selectedBack; // a selected cell's ground
        QColor selectedText; // a selected cell's text
    };

    ProgressCellPainter(const Colours &colours, const QFont &font);

    // The percentage a status stands for: the number rounded to a whole
    // (halves to the even neighbour) and limited to 0..100. Nothing for a
    // status that is no number.
    static std::optional<int> percentOf(const QString &status);
    // The whole number limited to 0..100.
    static int clampPercent(int percent);
    // Where the bar ends in a cell that starts at left and is width wide:
    // left + P/100 * width, rounded to the nearest pixel, halves to even.
    static int barRight(int left, int width, int percent);

    void paint(QPainter *painter, const QRect &cell, int percent, bool selected) const;

private:
    Colours m_colours;
    QFont m_font;
};
