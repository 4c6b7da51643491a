#include "list/downloadlist.h"

#include "list/sitetable.h"
#include "prompts/prompts.h"

#include <algorithm>
#include <cmath>

namespace {

const FieldInfo kFields[FieldCount] = {
    {"ItemID", true, 0},     {"CheckBox", true, 0},         {"LinkURL", false, 0},
    {"LocalFile", false, 0}, {"Status", false, 50},         {"FileSize", false, 20},
    {"Speed", false, 20},    {"TimeLeft", false, 20},       {"WaitTimeInSec", false, 20},
    {"DirectURL", false, 0}, {"LocalFilePath", false, 255}, {"IsResume", true, 0},
    {"ErrorDesc", false, 0}, {"IsDownloading", true, 0},
};

// Defaults of a new link row, in field order.
const char *const kDefaults[FieldCount] = {"0", "0", "", "?", "Waiting", "?", "",
                                           "",  "0", "", "",  "0",       "",  "0"};

auto seqLess = [](const std::unique_ptr<LinkRow> &row, quint64 seq) { return row->seq < seq; };

QString checkedValue(Field f, const QString &value)
{
    const FieldInfo &info = fieldInfo(f);
    if (info.integer) {
        bool ok = false;
        const QString trimmed = value.trimmed();
        const double number = trimmed.toDouble(&ok);
        if (!ok)
            throw RuntimeFailure(
                QStringLiteral("Type mismatch in %1").arg(info.name).toStdString());
        return QString::number(qint64(std::llround(number)));
    }
    if (info.limit > 0 && value.size() > info.limit)
        throw RuntimeFailure(QStringLiteral("Text too long for %1").arg(info.name).toStdString());
    return value;
}

} // namespace

const FieldInfo &fieldInfo(Field field)
{
    return kFields[int(field)];
}

std::optional<Field> fieldByName(const QString &name)
{
    for (int i = 0; i < FieldCount; ++i) {
        if (name.compare(QLatin1String(kFields[i].name), Qt::CaseInsensitive) == 0)
            return Field(i);
    }
    return std::nullopt;
}

// ---- RowCursor ----

const SiteRow *RowCursor::siteRow() const
{
    if (!m_list || m_list->generation() != m_generation)
        return nullptr;
    return m_list->siteRow(m_site);
}

int RowCursor::recordCount() const
{
    const SiteRow *s = siteRow();
    return s ? int(s->children.size()) : 0;
}

bool RowCursor::bof() const
{
    return m_pos == Pos::Bof || recordCount() == 0;
}

bool RowCursor::eof() const
{
    return m_pos == Pos::Eof || recordCount() == 0;
}

void RowCursor::moveFirst()
{
    const SiteRow *s = siteRow();
    if (!s || s->children.empty()) {
        m_pos = Pos::Eof;
        return;
    }
    m_seq = s->children.front()->seq;
    m_pos = Pos::Row;
}

void RowCursor::moveLast()
{
    const SiteRow *s = siteRow();
    if (!s || s->children.empty()) {
        m_pos = Pos::Bof;
        return;
    }
    m_seq = s->children.back()->seq;
    m_pos = Pos::Row;
}

void RowCursor::moveNext()
{
    const SiteRow *s = siteRow();
    if (!s || m_pos == Pos::Eof)
        throw RuntimeFailure("Either BOF or EOF is True");
    if (m_pos == Pos::Bof) {
        moveFirst();
        return;
    }
    auto it = std::lower_bound(s->children.begin(), s->children.end(), m_seq + 1, seqLess);
    if (it == s->children.end()) {
        m_pos = Pos::Eof;
        return;
    }
    m_seq = (*it)->seq;
}

void RowCursor::movePrevious()
{
    const SiteRow *s = siteRow();
    if (!s || m_pos == Pos::Bof)
        throw RuntimeFailure("Either BOF or EOF is True");
    if (m_pos == Pos::Eof) {
        moveLast();
        return;
    }
    auto it = std::lower_bound(s->children.begin(), s->children.end(), m_seq, seqLess);
    if (it == s->children.begin()) {
        m_pos = Pos::Bof;
        return;
    }
    m_seq = (*std::prev(it))->seq;
}

void RowCursor::moveToIndex(int index)
{
    const SiteRow *s = siteRow();
    if (!s || index < 0 || index >= int(s->children.size())) {
        m_pos = Pos::Eof;
        return;
    }
    m_seq = s->children[index]->seq;
    m_pos = Pos::Row;
}

LinkRow *RowCursor::row() const
{
    if (m_pos != Pos::Row || !siteRow())
        return nullptr;
    return m_list->findRow(m_site, m_seq);
}

LinkRow &RowCursor::current() const
{
    LinkRow *r = row();
    if (!r)
        throw RuntimeFailure("No current record");
    return *r;
}

QString RowCursor::field(Field f) const
{
    return current().values[int(f)];
}

int RowCursor::intField(Field f) const
{
    return current().values[int(f)].toInt();
}

void RowCursor::setField(Field f, const QString &value)
{
    m_list->setField(&current(), f, value);
}

void RowCursor::deleteRow()
{
    m_list->removeRow(&current());
}

// ---- DownloadList ----

DownloadList::DownloadList(QObject *parent) : QObject(parent) {}
DownloadList::~DownloadList() = default;

void DownloadList::open()
{
    emit aboutToReset();
    m_sites.clear();
    ++m_generation;
    for (int id = 1; id <= Sites::Count; ++id) {
        auto site = std::make_unique<SiteRow>();
        site->isSite = true;
        site->id = id;
        site->siteName = Sites::name(id);
        site->activeTotal = QStringLiteral("0 Active, 0 Total");
        m_sites.push_back(std::move(site));
    }
    m_open = true;
    emit resetDone();
}

SiteRow *DownloadList::siteRowAt(int index) const
{
    return index >= 0 && index < int(m_sites.size()) ? m_sites[index].get() : nullptr;
}

SiteRow *DownloadList::siteRow(int site) const
{
    for (const auto &s : m_sites) {
        if (s->id == site)
            return s.get();
    }
    return nullptr;
}

int DownloadList::childCount(int site) const
{
    const SiteRow *s = siteRow(site);
    return s ? int(s->children.size()) : 0;
}

LinkRow *DownloadList::childAt(int site, int index) const
{
    const SiteRow *s = siteRow(site);
    if (!s || index < 0 || index >= int(s->children.size()))
        return nullptr;
    return s->children[index].get();
}

int DownloadList::indexOf(const LinkRow *row) const
{
    const SiteRow *s = row ? siteRow(row->site) : nullptr;
    if (!s)
        return -1;
    auto it = std::lower_bound(s->children.begin(), s->children.end(), row->seq, seqLess);
    if (it == s->children.end() || it->get() != row)
        return -1;
    return int(it - s->children.begin());
}

LinkRow *DownloadList::findRow(int site, quint64 seq) const
{
    const SiteRow *s = siteRow(site);
    if (!s)
        return nullptr;
    auto it = std::lower_bound(s->children.begin(), s->children.end(), seq, seqLess);
    return it != s->children.end() && (*it)->seq == seq ? it->get() : nullptr;
}

RowCursor DownloadList::getSiteRecords(int site) const
{
    if (!Sites::isSite(site))
        throw RuntimeFailure("Subscript out of range");
    RowCursor cursor;
    if (!siteRow(site))
        return cursor; // nothing: a table without this site's row
    cursor.m_list = const_cast<DownloadList *>(this);
    cursor.m_generation = m_generation;
    cursor.m_site = site;
    cursor.moveFirst();
    return cursor;
}

LinkRow *DownloadList::appendRow(int itemId)
{
    SiteRow *s = siteRow(itemId);
    if (!s)
        return nullptr;
    auto row = std::make_unique<LinkRow>();
    row->seq = m_nextSeq++;
    row->site = itemId;
    for (int i = 0; i < FieldCount; ++i)
        row->values[i] = QString::fromLatin1(kDefaults[i]);
    row->values[int(Field::ItemID)] = QString::number(itemId);
    const int index = int(s->children.size());
    emit rowsAboutToBeInserted(itemId, index, index);
    LinkRow *raw = row.get();
    s->children.push_back(std::move(row));
    s->lowerLinks[QString()] += 1;
    emit rowsInserted(itemId, index, index);
    return raw;
}

void DownloadList::setField(LinkRow *row, Field f, const QString &value)
{
    const QString stored = checkedValue(f, value);
    QString &slot = row->values[int(f)];
    if (slot == stored)
        return;
    if (f == Field::LinkURL) {
        SiteRow *s = siteRow(row->site);
        if (s) {
            const QString oldKey = slot.toLower();
            if (--s->lowerLinks[oldKey] <= 0)
                s->lowerLinks.remove(oldKey);
            s->lowerLinks[stored.toLower()] += 1;
        }
    }
    slot = stored;
    emit fieldChanged(row->site, indexOf(row), f);
}

void DownloadList::removeRow(LinkRow *row)
{
    SiteRow *s = siteRow(row->site);
    const int index = indexOf(row);
    if (!s || index < 0)
        throw RuntimeFailure("Row handle referred to a deleted row");
    emit rowAboutToBeRemoved(row->site, index);
    const QString key = row->values[int(Field::LinkURL)].toLower();
    if (--s->lowerLinks[key] <= 0)
        s->lowerLinks.remove(key);
    const int site = row->site;
    s->children.erase(s->children.begin() + index);
    emit rowRemoved(site, index);
}

bool DownloadList::hasLink(int site, const QString &link) const
{
    const SiteRow *s = siteRow(site);
    return s && s->lowerLinks.contains(link.toLower());
}

bool DownloadList::addLinkToList(const QString &link, int site, Prompts *prompts)
{
    try {
        RowCursor rows = getSiteRecords(site);
        if (rows.recordCount() > 0 && hasLink(site, link))
            return false;
        LinkRow *row = appendRow(site);
        if (!row)
            throw RuntimeFailure("No parent row for the site");
        setField(row, Field::LinkURL, link);
        return true;
    } catch (const RuntimeFailure &) {
        if (prompts)
            prompts->balloon(1, QStringLiteral("Can not Add link: ") + link,
                             QStringLiteral("TessalwickDownloadManager"), 3000);
        return false;
    }
}
