#include "ui/optionsdialog.h"

#include "ui/windowparts.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QLabel>
#include <QRadioButton>

namespace {

constexpr int kWidth = 380;
constexpr int kHeaderBottom = 60;
const QString kHeading = QStringLiteral("color: rgb(251, 170, 110); font-weight: bold;");

} // namespace

OptionsDialog::OptionsDialog(AppCore *core, Options::Launcher launch, QWidget *parent)
    : SkinDialog(QStringLiteral("frmOptions"), QStringLiteral("Options"), QSize(kWidth, 418),
                 kHeaderBottom, QStringLiteral("cmdTitleClose"), parent),
      m_core(core), m_launch(std::move(launch))
{
    label("lblOptions", QStringLiteral("Options"),
          QRect(16, kTitleStripHeight, 200, kHeaderBottom - kTitleStripHeight),
          QStringLiteral("color: white; font-weight: bold; font-size: 19px;"));

    addPanel(QRect(12, 70, kWidth - 24, 52));
    label("lblGeneralOptions", QStringLiteral("General Options:"), QRect(22, 74, 300, 18),
          kHeading);
    m_start = addCheck("chkStart", "lblStart", QStringLiteral("Start with windows"), 96);

    addPanel(QRect(12, 130, kWidth - 24, 118));
    label("Label2", QStringLiteral("Browser Integeration Options:"), QRect(22, 134, 300, 18),
          kHeading);
    m_ie =
        addCheck("chkIntIE", "lblIntIE", QStringLiteral("Integrate into Internet Explorer"), 156);
    const QString noBrowser = QStringLiteral("This system has no Internet Explorer: the setting "
                                             "is kept, and nothing else changes.");
    m_ie->setToolTip(noBrowser);
    findChild<QLabel *>(QStringLiteral("lblIntIE"))->setToolTip(noBrowser);
    m_fireFox =
        addCheck("chkIntFireFox", "lblIntFireFox", QStringLiteral("Integrate into FireFox"), 178);
    m_flock = addCheck("chkIntFlock", "lblIntFlock", QStringLiteral("Integrate into Flock"), 200);
    findChild<QLabel *>(QStringLiteral("lblIntFlock"))
        ->setToolTip(QStringLiteral("Chromium and Google Chrome"));
    m_startDownload =
        addCheck("chkStartDownload", "lblStartDownload",
                 QStringLiteral("Start download when add or catch sharing link."), 222);

    addPanel(QRect(12, 256, kWidth - 24, 74));
    label("Label3", QStringLiteral("When open supported link in new browser tab:"),
          QRect(22, 260, 330, 18), kHeading);
    auto *group = new QButtonGroup(this);
    auto option = [this, group](int index, const char *name, const QString &text, int y) {
        auto *button = new QRadioButton(this);
        button->setObjectName(QStringLiteral("optNewBrowserTab(%1)").arg(index));
        button->setGeometry(24, y, 18, 18);
        group->addButton(button);
        // The option's text takes no clicks.
        label(name, text, QRect(46, y, 280, 18));
        return button;
    };
    m_nothing = option(0, "lbloNothing", QStringLiteral("Do Nothing"), 282);
    m_add = option(1, "lblAdd2DownLink", QStringLiteral("Add to download list"), 304);

    label("Label1", QStringLiteral("* Browser integration will be activated at next browser start"),
          QRect(18, 336, kWidth - 36, 30),
          QStringLiteral("color: rgb(220, 224, 230); font-size: 11px;"));

    auto button = [this](const char *name, const QString &text, int x) {
        auto *b = new SkinButton(QString::fromLatin1(name), SkinButton::Glyph::None,
                                 SkinButton::greyColours(), this);
        b->setText(text);
        b->setGeometry(x, 374, 90, 30);
        return b;
    };
    connect(button("cmdApply", QStringLiteral("&Ok"), kWidth - 206), &QAbstractButton::clicked,
            this, &OptionsDialog::ok);
    connect(button("cmdClose", QStringLiteral("&Cancel"), kWidth - 106), &QAbstractButton::clicked,
            this, &QDialog::reject);

    // The settings as they stand; the window's design selects "Add to
    // download list" unless "Do Nothing" is set.
    const OptionsValues v = Options::load();
    m_start->setChecked(v.startAtLogOn);
    m_ie->setChecked(v.ie);
    m_fireFox->setChecked(v.fireFox);
    m_flock->setChecked(v.flock);
    m_startDownload->setChecked(v.startDownload != 0);
    (v.doNothing ? m_nothing : m_add)->setChecked(true);
}

QCheckBox *OptionsDialog::addCheck(const char *box, const char *labelName, const QString &text,
                                   int y)
{
    auto *check = new QCheckBox(this);
    check->setObjectName(QString::fromLatin1(box));
    check->setGeometry(24, y, 18, 18);
    auto *caption = new ClickLabel(QString::fromLatin1(labelName), text, this);
    caption->setGeometry(46, y, 300, 18);
    caption->setStyleSheet(QStringLiteral("color: white;"));
    connect(caption, &ClickLabel::clicked, check, &QCheckBox::toggle);
    return check;
}

OptionsValues OptionsDialog::values() const
{
    return {m_start->isChecked(),         m_ie->isChecked(),
            m_fireFox->isChecked(),       m_flock->isChecked(),
            m_startDownload->isChecked(), m_nothing->isChecked()};
}

void OptionsDialog::ok()
{
    Options::apply(values(), *m_core, m_launch);
    accept();
}
