#include "intake/linkextraction.h"

// Placeholder until link extraction lands.
int parseLinks(const QString &, bool, bool, DownloadList &, Prompts *)
{
    return -1;
}
int classifyLink(const QString &)
{
    return 0;
}
namespace LinkHint {
QString designText()
{
    return {};
}
QString shortText()
{
    return {};
}
QString lostFocusText()
{
    return {};
}
bool holdsHint(const QString &)
{
    return false;
}
} // namespace LinkHint
