#pragma once

#include <QString>

class DownloadList;
class Prompts;

// LinkList.lq: six lines a row (ItemID, LinkURL, LocalFile, Status, FileSize,
// LocalFilePath), CR LF line ends, sites in number order. An empty list is
// stored as no file.
namespace LinkListFile {
// Writes a new file beside the old one and puts it in its place, so a crash
// in the middle never loses the list that was there. False on failure.
bool saveLinkList(const DownloadList &list, const QString &path);
// Reads the file once; a damaged file shows "LinkList.lq is corrupted, Last
// saved list will not be loaded" and keeps the rows read before the damage.
void loadLinkList(DownloadList &list, const QString &path, Prompts *prompts);
} // namespace LinkListFile
