#include "intake/linkextraction.h"

#include "list/downloadlist.h"
#include "list/sitetable.h"
#include "prompts/prompts.h"

#include <array>

namespace {

constexpr QStringView kSchemeWww = u"http://www.";
constexpr QStringView kScheme = u"http://";
constexpr QStringView kHintSentence = u"Type or paste the sharing links, You can paste the whole "
                                      u"web page and the program will extract the valid links.";
constexpr QStringView kHintSecond =
    u"Also you can check Browser Integeration in the program options.";

// Only blanks are trimmed: tabs and line breaks stay part of a word.
QStringView trimBlanks(QStringView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == u' ')
        ++begin;
    while (end > begin && text[end - 1] == u' ')
        --end;
    return text.sliced(begin, end - begin);
}

// Appends `source` to `out` without any occurrence of `needle` (case-insensitive,
// left to right, non-overlapping, one pass).
void appendWithout(QStringView source, QStringView needle, QString &out)
{
    qsizetype from = 0;
    for (;;) {
        const qsizetype at = source.indexOf(needle, from, Qt::CaseInsensitive);
        if (at < 0)
            break;
        out.append(source.sliced(from, at - from));
        from = at + needle.size();
    }
    out.append(source.sliced(from));
}

// Classifies words one after another. The path belongs to the run, not to a
// word: a word without any "/" leaves the previous word's path in place.
// Buffers are reused from word to word, so a word costs no allocation.
class WordClassifier
{
public:
    WordClassifier()
    {
        const SiteHosts &hosts = SiteHosts::instance();
        for (const Sites::Site &site : Sites::all()) {
            QString host = hosts.host(site.number).toLower();
            if (host.startsWith(u"www."))
                host.remove(0, 4);
            // A site without a host, or whose links intake doesn't know, has
            // no literal and recognises nothing.
            const bool known = site.recognition.recognised && !host.isEmpty();
            m_literals[site.number - 1] = known ? host + u'/' : QString();
        }
    }

    // The site number of an accepted word, 0 when the word is skipped or dropped.
    // `word` must already be trimmed.
    int classify(QStringView word)
    {
        if (word.size() < 5)
            return 0;
        // Removing the schemes never makes a "/", so a word without one keeps
        // the path as it stands.
        if (word.contains(u'/')) {
            QStringView copy = word;
            if (word.contains(kScheme, Qt::CaseInsensitive)) {
                m_stripped.resize(0);
                appendWithout(word, kSchemeWww, m_stripped);
                m_scratch.resize(0);
                appendWithout(m_stripped, kScheme, m_scratch);
                copy = m_scratch;
            }
            const qsizetype slash = copy.indexOf(u'/');
            if (slash >= 0) {
                m_path.resize(0);
                m_path.append(copy.sliced(slash + 1));
            }
        }
        if (m_path.size() < 2)
            return 0;
        return decide(word);
    }

private:
    int decide(QStringView word) const
    {
        // Tried strictly in the table's order.
        for (const Sites::Site &site : Sites::all()) {
            const QString &literal = m_literals[site.number - 1];
            if (literal.isEmpty() || !word.contains(literal, Qt::CaseInsensitive))
                continue;
            const Sites::Recognition &row = site.recognition;
            for (QStringView fragment : row.excluded) {
                if (!fragment.isEmpty() &&
                    QStringView(m_path).contains(fragment, Qt::CaseInsensitive))
                    return 0;
            }
            if (!row.required.isEmpty() &&
                !QStringView(m_path).contains(row.required, Qt::CaseInsensitive))
                return 0;
            return site.number;
        }
        return 0;
    }

    std::array<QString, Sites::Count> m_literals;
    QString m_stripped;
    QString m_scratch;
    QString m_path;
};

} // namespace

int parseLinks(const QString &sText, bool isCommand, DownloadList &list, Prompts *prompts)
{
    if (trimBlanks(sText).isEmpty() || sText.size() < 5) {
        if (!isCommand && prompts)
            prompts->messageBox(QStringLiteral("No Supported links Found."),
                                Prompts::Icon::Exclamation, Prompts::Buttons::Ok);
        return -1;
    }

    WordClassifier classifier;
    int added = 0;
    const QStringView text(sText);
    const QStringView lineBreak = u"\r\n";
    qsizetype lineStart = 0;
    for (;;) {
        // Lines end at CR LF pairs only; a lone CR or LF stays inside a word.
        qsizetype lineEnd = text.indexOf(lineBreak, lineStart);
        const bool lastLine = lineEnd < 0;
        if (lastLine)
            lineEnd = text.size();
        const QStringView line = text.sliced(lineStart, lineEnd - lineStart);
        // Words are cut at every single blank; runs of blanks give empty words.
        qsizetype wordStart = 0;
        for (;;) {
            qsizetype wordEnd = line.indexOf(u' ', wordStart);
            const bool lastWord = wordEnd < 0;
            if (lastWord)
                wordEnd = line.size();
            const QStringView word = trimBlanks(line.sliced(wordStart, wordEnd - wordStart));
            if (const int site = classifier.classify(word)) {
                if (list.addLinkToList(word.toString(), site, prompts))
                    ++added;
            }
            if (lastWord)
                break;
            wordStart = wordEnd + 1;
        }
        if (lastLine)
            break;
        lineStart = lineEnd + lineBreak.size();
    }

    if (added > 0 && prompts) {
        const QString note = added == 1 ? QStringLiteral("1 Link Added")
                                        : QString::number(added) + QStringLiteral(" Links Added");
        prompts->balloon(1, note, QStringLiteral("Tessalwick"), 5000);
    }
    return added;
}

int classifyLink(const QString &word)
{
    WordClassifier classifier;
    return classifier.classify(trimBlanks(word));
}

namespace LinkHint {

QString designText()
{
    QString text(15, u' ');
    text.append(kHintSentence).append(QString(14, u' ')).append(u"\r\n");
    text.append(QString(39, u' ')).append(kHintSecond).append(u"\r\n");
    return text;
}

QString shortText()
{
    QString text(9, u' ');
    text.append(kHintSentence).append(QString(59, u' ')).append(kHintSecond);
    return text;
}

QString lostFocusText()
{
    return shortText().append(u"\r\n");
}

bool holdsHint(const QString &text)
{
    return text.contains(kHintSentence, Qt::CaseSensitive);
}

} // namespace LinkHint
