#pragma once

class DownloadList;
class Prompts;

// The commands by which the user changes the list by hand. They act on the
// rows' CheckBox field (a ticked row holds 1), never on a view's selection,
// and none of them saves the list.
namespace ListCommands {

// Where the view's first visible row is, so that a command can put it back.
class View
{
public:
    virtual ~View() = default;
    virtual int firstVisibleRow() const = 0;
    virtual void setFirstVisibleRow(int row) = 0;
};

// One ticked "Waiting" row per call moves one place within its site: the
// topmost such row of the first site that has one, but not the site's first
// row. moveUp never climbs over a row that is not "Waiting"; moveDown takes
// the row below whatever it holds and passes the site's last row by.
// IsDownloading stays where it is. A failure ends the command at once and
// leaves the view where the command left it.
void moveUp(DownloadList &list, View *view);
void moveDown(DownloadList &list, View *view);
// Deletes the ticked rows; a ticked row in progress stays, with a message
// for each such row.
void removeSelected(DownloadList &list, Prompts *prompts, View *view);
// Ticked rows not in progress become "Waiting" again, with size and file
// name unknown and the tick cleared.
void redownload(DownloadList &list, View *view);
// Deletes every "Complete" row.
void clearComplete(DownloadList &list);
// Deletes every row whose status holds "error" in any case, or is "Not Found".
void clearError(DownloadList &list);

} // namespace ListCommands
