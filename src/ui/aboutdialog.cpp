#include "ui/aboutdialog.h"

#include "app/about.h"
#include "prompts/prompts.h"
#include "ui/windowparts.h"

#include <QLabel>

namespace {

constexpr int kWidth = 350; // 5250 by 4305 twips
constexpr int kHeaderBottom = 70;

} // namespace

AboutDialog::AboutDialog(Prompts *prompts, QWidget *parent)
    : SkinDialog(QStringLiteral("frmAbout"), QStringLiteral("About"), QSize(kWidth, 287),
                 kHeaderBottom, QStringLiteral("cmdTitleClose"), parent)
{
    label("Label1", QStringLiteral("About Tessalwick Download manager"),
          QRect(16, kTitleStripHeight + 4, kWidth - 32, 22),
          QStringLiteral("color: white; font-weight: bold; font-size: 15px;"));
    label("Label4", QStringLiteral("Get the maximum of sharing sites"),
          QRect(16, kTitleStripHeight + 26, kWidth - 32, 18),
          QStringLiteral("color: rgb(200, 206, 214);"));
    addPanel(QRect(12, 80, kWidth - 24, 150));
    label("Label2", QStringLiteral("Best Free Software"), QRect(24, 88, 200, 18),
          QStringLiteral("color: rgb(251, 170, 110); font-weight: bold;"));
    label("lblVer", About::versionText(), QRect(kWidth - 124, 88, 100, 18),
          QStringLiteral("color: white;"))
        ->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label("Label3",
          QStringLiteral("Tessalwick Download manager is an easy to use tool to manage and "
                         "download files from the most popular sharing websites like Rapidshare, "
                         "Megaupload, Hotfile...etc, Also video sites like Youtube is supported. "
                         "Enjoy this unique tool.."),
          QRect(24, 110, kWidth - 48, 90), QStringLiteral("color: rgb(230, 232, 236);"));
    auto *site = new ClickLabel(QStringLiteral("lblOptions"), About::makerHost, this);
    site->setGeometry(24, 204, kWidth - 48, 18);
    site->setStyleSheet(QStringLiteral("color: rgb(120, 180, 255); text-decoration: underline;"));
    site->setCursor(Qt::PointingHandCursor);
    connect(site, &ClickLabel::clicked, this, [prompts] {
        if (prompts)
            prompts->openExternal(About::makerHost);
    });
    auto *close = new SkinButton(QStringLiteral("cmdClose"), SkinButton::Glyph::None,
                                 SkinButton::greyColours(), this);
    close->setText(QStringLiteral("&Close"));
    close->setGeometry(kWidth - 106, 244, 90, 30);
    connect(close, &QAbstractButton::clicked, this, &QDialog::accept);
}
