#pragma once

#include <QString>

// The message for an HTTP status number; "SUCCESS" for any number not in the
// table. Kept for the owner of the transfers; the transfer itself reports only
// "Connection Error" and system descriptions.
QString getError(int errNum);
