#pragma once

#include "system/failure.h"

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QString>

#include <array>
#include <memory>
#include <optional>
#include <vector>

class Prompts;

// The fields of a child row, in their defined order.
enum class Field {
    ItemID,
    CheckBox,
    LinkURL,
    LocalFile,
    Status,
    FileSize,
    Speed,
    TimeLeft,
    WaitTimeInSec,
    DirectURL,
    LocalFilePath,
    IsResume,
    ErrorDesc,
    IsDownloading,
};
constexpr int FieldCount = 14;

struct FieldInfo
{
    const char *name;
    bool integer;
    int limit; // characters; 0 for long text
};
const FieldInfo &fieldInfo(Field field);
std::optional<Field> fieldByName(const QString &name);

// Tree nodes, shaped for the item model: a parent row per site, a child row per link.
struct ListNode
{
    bool isSite = false;
};

struct LinkRow : ListNode
{
    quint64 seq = 0; // list order; rows are only ever appended
    int site = 0;
    std::array<QString, FieldCount> values;
};

struct SiteRow : ListNode
{
    int id = 0;
    QString siteName;
    QString activeTotal;
    std::vector<std::unique_ptr<LinkRow>> children;
    QHash<QString, int> lowerLinks; // lower-cased LinkURL -> rows holding it
};

class DownloadList;

// A cursor on one site's child rows. It stays on its row while other rows are
// added or deleted; on a deleted row reads and writes fail, and moving goes
// on from where the row stood.
class RowCursor
{
public:
    RowCursor() = default;

    bool isNull() const { return !m_list; }
    int site() const { return m_site; }
    int recordCount() const;
    bool bof() const;
    bool eof() const;
    void moveFirst();
    void moveLast();
    void moveNext();
    void movePrevious();
    // Onto the row at this index of the site's rows; past the last one when
    // there is none.
    void moveToIndex(int index);

    LinkRow *row() const; // the live row under the cursor, or nullptr
    QString field(Field f) const;
    int intField(Field f) const;
    void setField(Field f, const QString &value);
    void setField(Field f, int value) { setField(f, QString::number(value)); }
    void deleteRow();

private:
    friend class DownloadList;
    enum class Pos { Bof, Row, Eof };
    LinkRow &current() const;
    const SiteRow *siteRow() const;

    QPointer<DownloadList> m_list;
    quint64 m_generation = 0;
    int m_site = 0;
    quint64 m_seq = 0;
    Pos m_pos = Pos::Bof;
};

// The two-level list: eight parent rows, child rows under them by ItemID.
class DownloadList : public QObject
{
    Q_OBJECT
public:
    explicit DownloadList(QObject *parent = nullptr);
    ~DownloadList() override;

    // A new empty table with the eight site rows ("0 Active, 0 Total").
    void open();
    bool isOpen() const { return m_open; }
    quint64 generation() const { return m_generation; }

    int siteRowCount() const { return int(m_sites.size()); }
    SiteRow *siteRowAt(int index) const; // 0-based, nullptr outside
    SiteRow *siteRow(int site) const;    // by ID
    int childCount(int site) const;
    LinkRow *childAt(int site, int index) const;
    int indexOf(const LinkRow *row) const;
    LinkRow *findRow(int site, quint64 seq) const;

    // The child rows of a site, positioned on the first. Throws for a number
    // outside 1..8; a site without rows gives a cursor with no rows.
    RowCursor getSiteRecords(int site) const;

    // A row with the defaults of a new link. Rows whose ItemID names no site
    // belong nowhere and are not kept.
    LinkRow *appendRow(int itemId);
    void setField(LinkRow *row, Field f, const QString &value);
    void removeRow(LinkRow *row);

    // True if the site holds a row whose link equals this one, ignoring case.
    bool hasLink(int site, const QString &link) const;

    // Adds a link as a "Waiting" row unless the site has it already. A failure
    // shows a balloon "Can not Add link: ..." and gives false.
    bool addLinkToList(const QString &link, int site, Prompts *prompts);

signals:
    void aboutToReset();
    void resetDone();
    void rowsAboutToBeInserted(int site, int first, int last);
    void rowsInserted(int site, int first, int last);
    void rowAboutToBeRemoved(int site, int index);
    void rowRemoved(int site, int index);
    void fieldChanged(int site, int index, Field field);

private:
    std::vector<std::unique_ptr<SiteRow>> m_sites;
    bool m_open = false;
    quint64 m_generation = 0;
    quint64 m_nextSeq = 1;
};
