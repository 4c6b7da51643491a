#include "list/linklistfile.h"

#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "prompts/prompts.h"
#include "scheduling/numbertext.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

void showCorrupted(Prompts *prompts)
{
    if (prompts)
        prompts->messageBox(
            QStringLiteral("LinkList.lq is corrupted, Last saved list will not be loaded"),
            Prompts::Icon::Critical, Prompts::Buttons::Ok);
}

// A row whose ItemID names no site is not kept, but its texts must still fit
// their fields, as they would have been written.
void checkFits(Field f, const QString &value)
{
    const int limit = fieldInfo(f).limit;
    if (limit > 0 && value.size() > limit)
        throw RuntimeFailure("Text too long");
}

} // namespace

namespace LinkListFile {

bool saveLinkList(const DownloadList &list, const QString &path)
{
    QByteArray text;
    for (int site = 1; site <= list.siteRowCount(); ++site) {
        RowCursor rows = list.getSiteRecords(site);
        for (rows.moveFirst(); !rows.eof(); rows.moveNext()) {
            for (Field f : {Field::ItemID, Field::LinkURL, Field::LocalFile, Field::Status,
                            Field::FileSize, Field::LocalFilePath}) {
                text += rows.field(f).toUtf8();
                text += "\r\n";
            }
        }
    }
    if (text.isEmpty()) {
        // An empty list is stored as no file at all.
        if (QFileInfo::exists(path)) {
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
            return QFile::remove(path);
        }
        return true;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // The save file commits even where its last flush failed: a short list
    // that didn't reach the disk would replace the whole old one.
    if (file.write(text) != text.size() || !file.flush()) {
        file.cancelWriting();
        return false;
    }
    if (!file.commit())
        return false;
    // The new file replaces a read-only one; it is an ordinary file again.
    QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                    QFile::ReadOther);
    return true;
}

void loadLinkList(DownloadList &list, const QString &path, Prompts *prompts)
{
    if (!QFileInfo::exists(path))
        return;
    try {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            throw RuntimeFailure("File can't be read");
        const QByteArray bytes = file.readAll();
        file.close();
        // A zero-length file has no text to read: that counts as damage.
        if (bytes.isEmpty())
            throw RuntimeFailure("Input past end of file");
        const QStringList parts = QString::fromUtf8(bytes).split(QStringLiteral("\r\n"));
        const qsizetype u = parts.size() - 1;
        if (u < 6)
            return;
        if (u % 6 != 0) {
            showCorrupted(prompts);
            return;
        }
        for (qsizetype i = 0; i < u; i += 6) {
            // A whole 32-bit number, halves to even; anything else is damage.
            const int itemId = NumberText::toInt32(parts[i]);
            if (!Sites::isSite(itemId)) {
                checkFits(Field::Status, parts[i + 3]);
                checkFits(Field::FileSize, parts[i + 4]);
                checkFits(Field::LocalFilePath, parts[i + 5]);
                continue;
            }
            LinkRow *row = list.appendRow(itemId);
            try {
                list.setField(row, Field::LinkURL, parts[i + 1]);
                list.setField(row, Field::LocalFile, parts[i + 2]);
                list.setField(row, Field::Status, parts[i + 3]);
                list.setField(row, Field::FileSize, parts[i + 4]);
                list.setField(row, Field::LocalFilePath, parts[i + 5]);
            } catch (...) {
                // The half-read row goes; the rows before it stay.
                list.removeRow(row);
                throw;
            }
        }
    } catch (const RuntimeFailure &) {
        showCorrupted(prompts);
    }
}

} // namespace LinkListFile
