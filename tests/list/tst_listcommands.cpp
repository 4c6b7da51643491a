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

// The command, the rows before and after it (as fill() takes them), the
// messages it shows.
using Commands = Table<QString, QString, QString, int>;

const QHash<QString, QString> kStatus = {
    {"W", "Waiting"},    {"C", "Complete"}, {"E", "Error"},   {"CE", "Connection Error"},
    {"NF", "Not Found"}, {"ER", "ERROR"},   {"S", "Stopped"}, {"50", "50"}};

// Rows as "site:name:status:flags", flags t (ticked) and d (in progress);
// the name is the link's last part and the local file's name.
void fill(DownloadList &list, const QString &rows)
{
    list.open();
    for (const QString &token : rows.split(' ', Qt::SkipEmptyParts)) {
        const QStringList part = token.split(':');
        const int site = part[0].toInt();
        const QString link = (site == 1 ? "rapidshare.com/files/" : "hotfile.com/dl/") + part[1];
        QVERIFY(list.addLinkToList(link, site, nullptr));
        LinkRow *row = list.childAt(site, list.childCount(site) - 1);
        list.setField(row, Field::Status, kStatus.value(part[2]));
        list.setField(row, Field::LocalFile, part[1] + ".zip");
        list.setField(row, Field::FileSize, "1 MB");
        list.setField(row, Field::DirectURL, "http://d/" + part[1]);
        const QString flags = part.value(3);
        list.setField(row, Field::CheckBox, flags.contains('t') ? "1" : "0");
        list.setField(row, Field::IsDownloading, flags.contains('d') ? "1" : "0");
    }
}

QString rowsOf(const DownloadList &list)
{
    QStringList rows;
    for (int site = 1; site <= Sites::Count; ++site) {
        for (int i = 0; i < list.childCount(site); ++i) {
            const auto &v = list.childAt(site, i)->values;
            QString flags = v[int(Field::CheckBox)] == "1" ? "t" : "";
            flags += v[int(Field::IsDownloading)] == "1" ? "d" : "";
            rows << QString("%1:%2:%3:%4")
                        .arg(site)
                        .arg(v[int(Field::LinkURL)].section('/', -1),
                             kStatus.key(v[int(Field::Status)]), flags);
        }
    }
    return rows.join(' ');
}

struct FakeView : ListCommands::View
{
    int row = 7;
    QList<int> set;
    int firstVisibleRow() const override { return row; }
    void setFirstVisibleRow(int r) override { set << r; }
};

} // namespace

class TestListCommands : public QObject
{
    Q_OBJECT
private slots:
    void commands_data()
    {
        const Commands table;
        auto row = [&](const char *tag, const char *command, const char *rows, const char *after,
                       int messages = 0) { table(tag, command, rows, after, messages); };
        const char *none = "1:a:W: 1:b:W: 7:x:W:";
        for (const char *command : {"up", "down", "remove", "reset"})
            row(qPrintable(QString("nothing ticked, ") + command), command, none, none);
        row("up moves the upper of two", "up", "1:a:W: 1:b:W:t 1:c:W:t", "1:b:W:t 1:a:W: 1:c:W:t");
        row("up passes the first row by", "up", "1:a:W:t 1:b:W:t 1:c:W:", "1:b:W:t 1:a:W:t 1:c:W:");
        row("up never climbs over another state", "up", "1:a:C: 1:b:W:t", "1:a:C: 1:b:W:t");
        row("up: the first site's candidate decides", "up", "1:a:S: 1:b:W:t 7:x:W: 7:y:W:t",
            "1:a:S: 1:b:W:t 7:x:W: 7:y:W:t");
        row("up leaves a stopped row", "up", "1:a:W: 1:b:S:t", "1:a:W: 1:b:S:t");
        row("down below a complete row", "down", "1:a:W:t 1:b:C:", "1:b:C: 1:a:W:t");
        row("down passes the last row by", "down",
            "1:a:W: 1:b:W:t 7:x:W:t 7:y:W:", "1:a:W: 1:b:W:t 7:y:W: 7:x:W:t");
        // The flag of a row in progress stays on its place.
        row("down: in progress stays", "down", "1:a:W:t 1:b:50:d", "1:b:50: 1:a:W:td");
        row("remove, a message per row in progress", "remove",
            "1:a:W:t 1:b:50:td 1:c:C: 7:x:E:td 7:y:W:t", "1:b:50:td 1:c:C: 7:x:E:td", 2);
        row("reset", "reset", "1:a:E:t 1:b:50:td 1:c:C:", "1:a:W: 1:b:50:td 1:c:C:");
        row("clear complete", "complete", "1:a:C:t 1:b:CE: 7:x:C: 7:y:W:", "1:b:CE: 7:y:W:");
        row("clear errors", "errors", "1:a:CE: 1:b:ER:t 1:c:NF: 1:d:C: 7:e:E:d 7:f:W:t",
            "1:d:C: 7:f:W:t");
    }
    void commands()
    {
        const auto [command, rows, after, messages] = Commands::fetch();
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
        QVERIFY(run.contains(command));
        run[command]();
        QCOMPARE(rowsOf(list), after);
        QCOMPARE(prompts.messages.size(), messages);
        for (const FakePrompts::Message &m : prompts.messages)
            QCOMPARE(m.text, "Can not delete item(s) in progrss. Stop first");
        // The view is put back where it was, by the commands that keep it.
        const bool keeps = QStringList{"up", "down", "remove", "reset"}.contains(command);
        QCOMPARE(view.set, keeps ? QList<int>{7} : QList<int>{});
        if (command == "reset" && rows.startsWith("1:a:E:t")) {
            // Exactly four fields are reset; the rest of the row stays.
            const auto &v = list.childAt(1, 0)->values;
            QCOMPARE(QStringList({v[int(Field::FileSize)], v[int(Field::LocalFile)],
                                  v[int(Field::DirectURL)]}),
                     QStringList({"?", "?", "http://d/a"}));
        }
    }

    // Clear: refused while anything runs, asked about, then a new empty list.
    void clearList()
    {
        Sandbox sandbox;
        FakePrompts prompts;
        AppCore core(&prompts);
        fill(core.list(), "1:a:W 7:x:50:d");
        core.clearList();
        prompts.answers << Prompts::Answer::No;
        core.list().setField(core.list().childAt(7, 0), Field::IsDownloading, "0");
        core.clearList();
        QCOMPARE(rowsOf(core.list()), "1:a:W: 7:x:50:");
        core.clearList();
        QCOMPARE(rowsOf(core.list()), "");
        QCOMPARE(core.list().siteRowCount(), Sites::Count);
        const QString ask =
            "message 2 2 Tessalwick: Are you sure that you want to remove all items?";
        QCOMPARE(
            prompts.told(),
            (QStringList{
                "message 3 0 Tessalwick: There is one download or more currently running, Please "
                "Stop downloading first.",
                ask, ask}));
    }
};

QTEST_GUILESS_MAIN(TestListCommands)
#include "tst_listcommands.moc"
