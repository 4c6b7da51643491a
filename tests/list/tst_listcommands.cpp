// The list bar's commands on the list itself: moves, removal, reset, the two
// clears and clearing the whole list.
#include "app/appcore.h"
#include "datatable.h"
#include "fakeprompts.h"
#include "list/downloadlist.h"
#include "list/listcommands.h"
#include "sandbox.h"

#include <QtTest>

namespace {

// The command and the rows before and after it, as fill() takes them.
using Commands = Table<QString, QString, QString>;

const QHash<QString, QString> kStatus = {
    {"W", "Waiting"},    {"C", "Complete"}, {"E", "Error"},   {"CE", "Connection Error"},
    {"NF", "Not Found"}, {"ER", "ERROR"},   {"S", "Stopped"}, {"50", "50"}};

// Rows as "site:link:status:flags", flags t (ticked) and d (in progress). The
// local file, size and direct link all read "x".
void fill(DownloadList &list, const QString &rows)
{
    list.open();
    for (const QString &token : rows.split(' ', Qt::SkipEmptyParts)) {
        const QStringList part = token.split(':');
        LinkRow *row = list.appendRow(part[0].toInt());
        list.setField(row, Field::LinkURL, part[1]);
        list.setField(row, Field::Status, kStatus.value(part[2]));
        for (Field f : {Field::LocalFile, Field::FileSize, Field::DirectURL})
            list.setField(row, f, "x");
        list.setField(row, Field::CheckBox, part[3].contains('t') ? "1" : "0");
        list.setField(row, Field::IsDownloading, part[3].contains('d') ? "1" : "0");
    }
}

QString rowsOf(const DownloadList &list)
{
    QStringList rows;
    for (int site = 1; site <= Sites::Count; ++site) {
        for (int i = 0; i < list.childCount(site); ++i) {
            const auto &v = list.childAt(site, i)->values;
            rows << QString("%1:%2:%3:%4%5")
                        .arg(site)
                        .arg(v[int(Field::LinkURL)], kStatus.key(v[int(Field::Status)]),
                             v[int(Field::CheckBox)] == "1" ? "t" : "",
                             v[int(Field::IsDownloading)] == "1" ? "d" : "");
        }
    }
    return rows.join(' ');
}

struct FakeView : ListCommands::View
{
    QList<int> set;
    int firstVisibleRow() const override { return 7; }
    void setFirstVisibleRow(int r) override { set << r; }
};

} // namespace

class TestListCommands : public QObject
{
    Q_OBJECT
private slots:
    void commands_data()
    {
        const Commands row;
        // Unticked rows never move, whatever their state; the first row has no
        // place to go up to, and the search goes on with the next site.
        row("up moves the upper of two", "up", "1:a:W:t 7:b:W: 7:c:W: 7:d:W:t 7:e:W:t",
            "1:a:W:t 7:b:W: 7:d:W:t 7:c:W: 7:e:W:t");
        // The stopped row doesn't move; the waiting one below never climbs over
        // it, and then the next site's candidate doesn't move either.
        row("up only among waiting rows", "up", "1:a:W: 1:s:S:t 1:b:W:t 7:x:W: 7:y:W:t",
            "1:a:W: 1:s:S:t 1:b:W:t 7:x:W: 7:y:W:t");
        // The row below is taken whatever it holds; the flag of a row in
        // progress stays on its place.
        row("down past a complete row", "down", "1:a:W:t 1:b:C:d", "1:b:C: 1:a:W:td");
        // The last row has no place to go down to.
        row("down, nothing to move", "down", "1:a:W: 1:s:S:t 1:b:W:t", "1:a:W: 1:s:S:t 1:b:W:t");
        row("remove, a message per row in progress", "remove",
            "1:a:W:t 1:b:50:td 1:c:C: 7:x:E:td 7:y:W:t", "1:b:50:td 1:c:C: 7:x:E:td");
        row("reset", "reset", "1:a:E:t 1:b:50:td 1:c:C:", "1:a:W: 1:b:50:td 1:c:C:");
        row("clear complete", "complete", "1:a:C:t 1:b:CE: 7:x:C: 7:y:W:", "1:b:CE: 7:y:W:");
        row("clear errors", "errors", "1:a:CE: 1:b:ER:t 1:c:NF: 1:d:C: 7:e:E:d 7:f:W:t",
            "1:d:C: 7:f:W:t");
    }
    void commands()
    {
        const auto [command, rows, after] = Commands::fetch();
        DownloadList list;
        fill(list, rows);
        FakePrompts prompts;
        FakeView view;
        const QHash<QString, std::function<void()>> run = {
            {"up", [&] { ListCommands::moveUp(list, &view); }},
            {"down", [&] { ListCommands::moveDown(list, &view); }},
            {"remove", [&] { ListCommands::removeSelected(list, &prompts, &view); }},
            {"reset", [&] { ListCommands::redownload(list, &view); }},
            {"complete", [&] { ListCommands::clearComplete(list); }},
            {"errors", [&] { ListCommands::clearError(list); }}};
        run[command]();
        QCOMPARE(rowsOf(list), after);
        // Remove tells of each ticked row in progress; nothing else speaks.
        QCOMPARE(prompts.messages.size(), command == "remove" ? rows.count(":td") : 0);
        for (const FakePrompts::Message &m : prompts.messages)
            QCOMPARE(m.text, "Can not delete item(s) in progrss. Stop first");
        // The view is put back where it was, by the commands that keep it.
        QCOMPARE(view.set, command == "complete" || command == "errors" ? QList<int>{} : QList{7});
        if (command == "reset") { // exactly four fields are reset, the rest of the row stays
            const auto &v = list.childAt(1, 0)->values;
            QCOMPARE(v[int(Field::FileSize)] + v[int(Field::LocalFile)] + v[int(Field::DirectURL)],
                     "??x");
        }
    }

    // Clear: refused while anything runs, asked about, then a new empty list.
    void clearList()
    {
        Sandbox sandbox;
        FakePrompts prompts;
        AppCore core(&prompts);
        fill(core.list(), "1:a:W: 7:x:50:d");
        core.clearList();
        prompts.answers << Prompts::Answer::No;
        core.list().setField(core.list().childAt(7, 0), Field::IsDownloading, "0");
        core.clearList();
        QCOMPARE(rowsOf(core.list()), "1:a:W: 7:x:50:");
        core.clearList();
        QCOMPARE(rowsOf(core.list()), "");
        // The refusal is the one the close gets; then the question, twice.
        const QStringList told = prompts.told();
        QVERIFY(told.size() == 3 && told[0].endsWith("Please Stop downloading first."));
        QCOMPARE(told.mid(1), QStringList(2, "message 2 2 Tessalwick: Are you sure that you want "
                                             "to remove all items?"));
    }
};

QTEST_GUILESS_MAIN(TestListCommands)
#include "tst_listcommands.moc"
