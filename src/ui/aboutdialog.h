#pragma once

#include "ui/skindialog.h"

class Prompts;

// About Tessalwick: the version, a few words and the maker's address, which
// opens in the browser when clicked.
class AboutDialog : public SkinDialog
{
    Q_OBJECT
public:
    AboutDialog(Prompts *prompts, QWidget *parent = nullptr);
};
