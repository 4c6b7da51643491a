#pragma once

#include "app/options.h"
#include "ui/skindialog.h"

class AppCore;
class QCheckBox;
class QRadioButton;

// The Options dialog: start at log-on, the browser switches, starting
// downloads after a hand-over and what a link from a new browser tab does.
// Each opening reads the settings anew; Ok writes them all and Cancel
// nothing. A click on a check box's text toggles the box.
class OptionsDialog : public SkinDialog
{
    Q_OBJECT
public:
    OptionsDialog(AppCore *core, Options::Launcher launch, QWidget *parent = nullptr);

    // The controls' values, as Ok would write them.
    OptionsValues values() const;

private:
    QCheckBox *addCheck(const char *box, const char *label, const QString &text, int y);
    void ok();

    AppCore *m_core;
    Options::Launcher m_launch;
    QCheckBox *m_start, *m_ie, *m_fireFox, *m_flock, *m_startDownload;
    QRadioButton *m_nothing, *m_add;
};
