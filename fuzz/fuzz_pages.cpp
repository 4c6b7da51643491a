// Every site's page readers on any page. The first byte chooses the reader;
// the text up to the first NUL byte is the link, the rest the page. A reader
// either gives its result or, where it may, a run-time failure: nothing else
// escapes.
#include "fuzzcommon.h"
#include "resolvers/depositfiles.h"
#include "resolvers/filefactory.h"
#include "resolvers/fourshared.h"
#include "resolvers/hotfile.h"
#include "resolvers/mediafire.h"
#include "resolvers/megaupload.h"
#include "resolvers/rapidshare.h"
#include "resolvers/resolverframe.h"
#include "resolvers/youtube.h"

namespace {

// A reading that ends in a countdown has given the row its wait.
void check(const Reading &reading)
{
    if (reading.end == Reading::End::Countdown && reading.value(Field::WaitTimeInSec).isNull() &&
        reading.value(Field::Status).isNull())
        Fuzz::broken("a countdown without a wait");
    (void)reading.toString();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    Fuzz::application();
    const QByteArray input = Fuzz::bytes(data + 1, size - 1);
    const qsizetype nul = input.indexOf('\0');
    const QString link = QString::fromUtf8(nul < 0 ? QByteArray() : input.left(nul));
    const QString page = QString::fromUtf8(nul < 0 ? input : input.mid(nul + 1));
    const QString folder = QStringLiteral("/downloads");
    int step = 1;
    try {
        switch (data[0] % 20) {
        case 0:
            (void)RapidShareRecipe::readFirstPage(page);
            break;
        case 1:
            check(RapidShareRecipe::readDownloadPage(page, link, folder));
            break;
        case 2:
            check(YoutubeRecipe::readWatchPage(page, QStringLiteral("youtube.test"), folder));
            break;
        case 3:
            if (YoutubeRecipe::unescapeUrl(page).size() > 1024)
                Fuzz::broken("an unescaped text over its limit");
            break;
        case 4:
            (void)MegaUploadRecipe::requestPath(page);
            break;
        case 5:
            (void)MegaUploadRecipe::readSocketAnswer(page, link);
            break;
        case 6:
            (void)MegaUploadRecipe::readCaptchaPage(page);
            break;
        case 7:
            check(MegaUploadRecipe::readDownloadPage(page, folder));
            break;
        case 8:
            (void)FourSharedRecipe::downloadPageAddress(link, page);
            break;
        case 9:
            if (const auto reading = FourSharedRecipe::readDownloadPage(page, folder))
                check(*reading);
            break;
        case 10:
            (void)MediaFireRecipe::hasDownloadScript(page);
            break;
        case 11:
            check(MediaFireRecipe::readScriptPage(page, link, folder));
            break;
        case 12:
            (void)DepositFilesRecipe::englishLink(page);
            break;
        case 13:
            check(DepositFilesRecipe::readDownloadPage(page, folder));
            break;
        case 14:
            (void)HotFileRecipe::readFormPage(page);
            break;
        case 15:
            check(HotFileRecipe::readPostAnswer(page, link, QString(), folder, step));
            break;
        case 16:
            (void)FileFactoryRecipe::readFirstPage(page);
            break;
        case 17:
            check(FileFactoryRecipe::readDownloadPage(page, link, QString(), folder));
            break;
        case 18:
            (void)ResolverFrame::parseWaitSeconds(page);
            break;
        default:
            (void)ResolverFrame::lastSegment(page, link);
            break;
        }
    } catch (const RuntimeFailure &) {
        // Where a reader has no guard of its own, its recipe's guard takes this.
    }
    return 0;
}
