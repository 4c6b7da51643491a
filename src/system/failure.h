#pragma once

#include <stdexcept>

// The program's one run-time failure: a field written past its limit, a
// cursor read where it stands on no row, a number that won't convert, a text
// position that can't be. Guards catch this type and write their outcome;
// code that goes on statement by statement uses ignoreFailure(). Anything
// else (running out of memory above all) is not such a failure and passes.
class RuntimeFailure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// Runs one statement; a run-time failure in it is ignored. True when it ran
// through.
template <typename F> bool ignoreFailure(F &&statement)
{
    try {
        statement();
        return true;
    } catch (const RuntimeFailure &) {
        return false;
    }
}
