#include "transfer/httperrors.h"

QString getError(int errNum)
{
    switch (errNum) {
    case 400:
        return QStringLiteral("HTTP 400-Bad Request");
    case 401:
        return QStringLiteral("HTTP 401.x-You are not authorized to view this page");
    case 403:
        return QStringLiteral("HTTP 403.x - Forbidden: Acess Denied");
    case 404:
        return QStringLiteral("HTTP 404-Object Not Found");
    case 405:
        return QStringLiteral("HTTP 405 - Resource Not Allowed");
    case 406:
        return QStringLiteral("HTTP Error 406 - Not Acceptable");
    case 407:
        return QStringLiteral("HTTP 407 - Proxy Authentication Required");
    case 410:
        return QStringLiteral("HTTP Error 410 - Permanently not available");
    case 412:
        return QStringLiteral("HTTP 412 - Precondition Failed");
    case 414:
        return QStringLiteral("HTTP 414 - Request - URI Too Long");
    case 500:
        return QStringLiteral("HTTP Error 500-Server Error - The server failed to fulfill an "
                              "apparently valid request");
    case 501:
        return QStringLiteral("Error 501 - Not implemented");
    case 502:
        return QStringLiteral("HTTP 502 - Bad Gateway");
    default:
        return QStringLiteral("SUCCESS");
    }
}
