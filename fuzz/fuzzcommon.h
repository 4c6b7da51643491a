#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <cstdint>
#include <cstdlib>

// What every fuzz target of the project shares: an application object for
// the code that needs one, made once, and a way to fail loudly.
namespace Fuzz {

inline QCoreApplication &application()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    return app;
}

inline QByteArray bytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

// A broken promise of the code: the fuzzer keeps the input that led here.
[[noreturn]] inline void broken(const char *what)
{
    qCritical("broken: %s", what);
    std::abort();
}

} // namespace Fuzz
