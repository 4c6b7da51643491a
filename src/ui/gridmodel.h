#pragma once

#include <QIdentityProxyModel>

class DownloadListModel;
class Prompts;

// The download list as the grid presents it. It adds what the core model
// leaves to the view: the translucent row grounds of the two bands, the
// colours of the selected and active rows and of the progress bar, a link
// status as a percentage where it is a number, and the site name across a
// site row. It also makes the link cell editable: a changed link is written
// only after the user confirms it.
class GridModel : public QIdentityProxyModel
{
    Q_OBJECT
public:
    enum Role {
        // The percentage (int 0..100) of a link's numeric Status; nothing
        // for any other cell.
        ProgressRole = Qt::UserRole + 100,
        SelectedBackgroundRole,
        SelectedForegroundRole,
        ActiveBackgroundRole,
        BarColourRole,   // the system's highlight colour
        FieldColourRole, // the system's highlight-text colour
    };

    // Alpha levels of the white row grounds: the grid's picture shows
    // through link rows more than through site rows.
    static constexpr int SiteRowAlpha = 220;
    static constexpr int LinkRowAlpha = 180;

    GridModel(DownloadListModel *source, Prompts *prompts, QObject *parent = nullptr);

    DownloadListModel *listModel() const;

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    bool commitLinkCell(const QModelIndex &index, const QVariant &value, int role);

    Prompts *m_prompts;
};
