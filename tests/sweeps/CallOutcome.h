// What comes out of a call of an exported function, and whether that is documented.

#pragma once

#include "tests/contract/functions/ExportedFunction.h"

#include <Kestrovane.h>

#include <new>

enum class Outcome { kReturned, kBadAlloc, kAtlException, kSomethingElse };

inline Outcome OutcomeOf(const std::function<void()>& call)
{
    try {
        call();
        return Outcome::kReturned;
    } catch (const std::bad_alloc&) {
        return Outcome::kBadAlloc;
    } catch (const CAtlException& exception) {
        return exception.m_hr == E_OUTOFMEMORY ? Outcome::kAtlException : Outcome::kSomethingElse;
    } catch (...) {
        return Outcome::kSomethingElse;
    }
}

inline bool IsDocumented(Outcome outcome, Throws throws)
{
    switch (outcome) {
    case Outcome::kReturned:
        return true;
    case Outcome::kBadAlloc:
        return throws == Throws::kBadAlloc || throws == Throws::kBadAllocOrAtlException;
    case Outcome::kAtlException:
        return throws == Throws::kAtlException || throws == Throws::kBadAllocOrAtlException;
    case Outcome::kSomethingElse:
        break;
    }
    return false;
}
