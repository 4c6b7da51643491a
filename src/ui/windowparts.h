#pragma once

#include <QAbstractButton>
#include <QColor>
#include <QLabel>
#include <QPlainTextEdit>

class QPainter;

// The look every window of the program shares, painted under its controls:
// the body, the header band down to `headerBottom` with its orange line, and
// the title strip with the window's icon (where `withIcon`) and title.
constexpr int kTitleStripHeight = 22;
void paintWindowSkin(QPainter &p, const QWidget &window, int headerBottom, bool withIcon);

// A flat button painted in the window's own look: a back colour that turns to
// the hover colour under the pointer and to the pressed colour while held, a
// drawn glyph and an optional caption beneath it.
class SkinButton : public QAbstractButton
{
    Q_OBJECT
public:
    enum class Glyph {
        None,
        Help,
        About,
        Tray,
        Minimize,
        Close,
        Options,
        Update,
        Add,
        Up,
        Down,
        Remove,
        ClearList,
        ClearComplete,
        ClearError,
        Redownload,
    };
    struct Colours
    {
        QColor back, hover, pressed, disabled, text;
    };
    // The small buttons of the title strip and the grey buttons of the foot.
    static Colours titleColours();
    static Colours greyColours();
    static Colours bigColours();

    SkinButton(const QString &name, Glyph glyph, const Colours &colours, QWidget *parent);

    QSize sizeHint() const override { return size(); }

    // A split button: its right end is a drop-down part of this width that
    // reports dropDownClicked() instead of a click.
    void setDropDownWidth(int width);
    int dropDownWidth() const { return m_dropDownWidth; }
    QRect dropDownRect() const;
    // After a pop-up of the button closes: the hover colour stays only while
    // the pointer is really on the button.
    void refreshHover();

signals:
    void dropDownClicked();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    bool hitButton(const QPoint &pos) const override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void drawGlyph(QPainter &p, const QRectF &box, const QColor &ink) const;

    Glyph m_glyph;
    Colours m_colours;
    bool m_hover = false;
    int m_dropDownWidth = 0;
};

// A label that reports a click, as the window's caption labels do.
class ClickLabel : public QLabel
{
    Q_OBJECT
public:
    ClickLabel(const QString &name, const QString &text, QWidget *parent);

signals:
    void clicked();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool m_pressed = false;
};

// The link box. Its text, as the program reads and writes it, separates lines
// with CR LF; the editor itself keeps plain line feeds. While it holds the
// instruction text, taking the focus empties it; losing the focus while it
// holds nothing but blanks puts the instruction back.
class LinkTextBox : public QPlainTextEdit
{
    Q_OBJECT
public:
    LinkTextBox(const QString &name, QWidget *parent);

    QString text() const;
    void setText(const QString &text);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    static bool movesWithinWindow(const QFocusEvent *event);
};
