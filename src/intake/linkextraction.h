#pragma once

#include <QString>

class DownloadList;
class Prompts;

// Cuts text into words and adds the links of the recognised sites to the list.
// Returns how many rows were added, or -1 when the text was too short to
// be looked at (the list is then not walked again). With isCommand false, blank or too short
// text gives the message "No Supported links Found.". Added links are
// announced in one balloon.
int parseLinks(const QString &sText, bool isCommand, DownloadList &list, Prompts *prompts);

// The site number whose recognition rule decides this word, with the verdict:
// 0 when no site literal occurs or the word's site refuses it.
int classifyLink(const QString &word);

// The instruction text of the link box, in its three forms.
namespace LinkHint {
QString designText();    // at start-up
QString shortText();     // after the add button
QString lostFocusText(); // after the box lost the focus while empty
// GotFocus: the box is emptied when its text holds the hint sentence.
bool holdsHint(const QString &text);
} // namespace LinkHint
