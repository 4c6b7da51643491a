#include "list/listcommands.h"

#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "prompts/prompts.h"
#include "system/failure.h"

#include <QString>

#include <array>

namespace {

const QString kWaiting = QStringLiteral("Waiting");

// The values a move carries: every field but IsDownloading, which stays
// with its place.
constexpr std::array<Field, 13> kMoved = {
    Field::ItemID,    Field::CheckBox, Field::IsResume,     Field::LinkURL,       Field::DirectURL,
    Field::ErrorDesc, Field::FileSize, Field::LocalFile,    Field::LocalFilePath, Field::Speed,
    Field::Status,    Field::TimeLeft, Field::WaitTimeInSec};

using Values = std::array<QString, kMoved.size()>;

Values read(const RowCursor &c)
{
    Values values;
    for (size_t i = 0; i < kMoved.size(); ++i)
        values[i] = c.field(kMoved[i]);
    return values;
}

void write(RowCursor &c, const Values &values)
{
    for (size_t i = 0; i < kMoved.size(); ++i)
        c.setField(kMoved[i], values[i]);
}

// The first ticked "Waiting" row that may move, searched site by site from
// the first; a null cursor when there is none.
RowCursor findMovable(const DownloadList &list, bool up)
{
    for (int site = 1; site <= Sites::Count; ++site) {
        RowCursor c = list.getSiteRecords(site);
        const int count = c.recordCount();
        for (int j = 0; !c.eof(); ++j, c.moveNext()) {
            const bool placeToGo = up ? j > 0 : j < count - 1;
            if (c.intField(Field::CheckBox) == 1 && c.field(Field::Status) == kWaiting && placeToGo)
                return c;
        }
    }
    return {};
}

// Remembers the view's first visible row and puts it back at the end of a
// command that ran through.
class KeepView
{
public:
    explicit KeepView(ListCommands::View *view)
        : m_view(view), m_row(view ? view->firstVisibleRow() : 0)
    {
    }
    void restore()
    {
        if (m_view)
            ignoreFailure([&] { m_view->setFirstVisibleRow(m_row); });
    }

private:
    ListCommands::View *m_view;
    int m_row;
};

// Every site's rows from the last to the first, each handed to `visit`; a
// failure in one statement passes.
template <typename Visit> void walkBackwards(DownloadList &list, Visit visit)
{
    for (int site = 1; site <= Sites::Count; ++site) {
        RowCursor c = list.getSiteRecords(site);
        const int count = c.recordCount();
        ignoreFailure([&] { c.moveLast(); });
        for (int i = 0; i < count; ++i) {
            visit(c);
            ignoreFailure([&] { c.movePrevious(); });
        }
    }
}

void deleteWhere(DownloadList &list, bool fromLast, bool (*matches)(const QString &status))
{
    for (int site = 1; site <= Sites::Count; ++site) {
        RowCursor c = list.getSiteRecords(site);
        if (fromLast)
            ignoreFailure([&] { c.moveLast(); });
        while (fromLast ? !c.bof() : !c.eof()) {
            ignoreFailure([&] {
                if (matches(c.field(Field::Status)))
                    c.deleteRow();
            });
            if (fromLast)
                c.movePrevious();
            else
                c.moveNext();
        }
    }
}

} // namespace

namespace ListCommands {

void moveUp(DownloadList &list, View *view)
{
    KeepView keep(view);
    RowCursor c = findMovable(list, true);
    if (!c.isNull()) {
        const Values row = read(c);
        c.movePrevious();
        // A waiting row never climbs over a row of another state.
        if (c.field(Field::Status) == kWaiting) {
            const Values above = read(c);
            c.moveNext();
            write(c, above);
            c.movePrevious();
            write(c, row);
        }
    }
    keep.restore();
}

void moveDown(DownloadList &list, View *view)
{
    KeepView keep(view);
    RowCursor c = findMovable(list, false);
    if (!c.isNull()) {
        // The row below is taken whatever it holds.
        const Values row = read(c);
        c.moveNext();
        const Values below = read(c);
        c.movePrevious();
        write(c, below);
        c.moveNext();
        write(c, row);
    }
    keep.restore();
}

void removeSelected(DownloadList &list, Prompts *prompts, View *view)
{
    KeepView keep(view);
    walkBackwards(list, [&](RowCursor &c) {
        ignoreFailure([&] {
            if (c.intField(Field::CheckBox) != 1)
                return;
            if (c.intField(Field::IsDownloading) == 1) {
                if (prompts)
                    prompts->messageBox(
                        QStringLiteral("Can not delete item(s) in progrss. Stop first"),
                        Prompts::Icon::Critical, Prompts::Buttons::Ok);
                return;
            }
            c.deleteRow();
        });
    });
    keep.restore();
}

void redownload(DownloadList &list, View *view)
{
    KeepView keep(view);
    walkBackwards(list, [](RowCursor &c) {
        bool reset = false;
        ignoreFailure([&] {
            reset = c.intField(Field::CheckBox) == 1 && c.intField(Field::IsDownloading) != 1;
        });
        if (!reset)
            return;
        ignoreFailure([&] { c.setField(Field::CheckBox, QStringLiteral("0")); });
        ignoreFailure([&] { c.setField(Field::Status, kWaiting); });
        ignoreFailure([&] { c.setField(Field::FileSize, QStringLiteral("?")); });
        ignoreFailure([&] { c.setField(Field::LocalFile, QStringLiteral("?")); });
    });
    keep.restore();
}

void clearComplete(DownloadList &list)
{
    deleteWhere(list, true,
                [](const QString &status) { return status == QLatin1String("Complete"); });
}

void clearError(DownloadList &list)
{
    deleteWhere(list, false, [](const QString &status) {
        return status.contains(QLatin1String("error"), Qt::CaseInsensitive) ||
               status == QLatin1String("Not Found");
    });
}

} // namespace ListCommands
