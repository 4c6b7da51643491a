#pragma once

#include <QDialog>
#include <QList>
#include <QPoint>
#include <QRect>

class QLabel;

// A frameless dialog in the main window's look: the grey body, the dark
// header band with its orange line, the light title strip with the caption
// and a close button, which rejects. Drag the title strip to move it.
// Rounded panels are drawn where addPanel() puts them.
class SkinDialog : public QDialog
{
    Q_OBJECT
public:
    // `closeName` names the title strip's close button.
    SkinDialog(const QString &name, const QString &title, const QSize &size, int headerBottom,
               const QString &closeName, QWidget *parent);

    void addPanel(const QRect &panel) { m_panels << panel; }
    // A label of the dialog, white unless `style` says otherwise.
    QLabel *label(const char *name, const QString &text, const QRect &place,
                  const QString &style = QString());

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;

private:
    int m_headerBottom;
    QList<QRect> m_panels;
    QPoint m_dragFrom;
};
