#include "diagnostics/reason.h"
#include "diagnostics/suspicions.h"

#include <tarnel/diagnostics.h>

namespace diagnostics = tarnelLib::diagnostics;
using tarnelLib::Result;

namespace {

diagnostics::FixedText<40> shownVersion(unsigned int version)
{
    diagnostics::FixedText<40> text;
    text.append(version / 10000);
    text.append(".");
    text.append(version / 100 % 100);
    text.append(".");
    text.append(version % 100);
    return text;
}

/// Before 1.0.0 a minor version may break what the one before it promised.
bool isCompatible(unsigned int client)
{
    const unsigned int unbroken = TARNEL_VERSION_MAJOR == 0 ? 100 : 10000;
    return client / unbroken == TARNEL_VERSION / unbroken && client <= TARNEL_VERSION;
}

} // namespace

unsigned int tarnelVersion()
{
    return TARNEL_VERSION;
}

unsigned int tarnelCheckVersion(unsigned int version, unsigned int layout)
{
    if (isCompatible(version) && layout == TARNEL_LAYOUT)
        return TARNEL_SUCCESS;
    if (isCompatible(version))
        diagnostics::note("the client was compiled with structures of layout ", layout, ", the library has ",
                          TARNEL_LAYOUT);
    else
        diagnostics::note("the client was compiled with version ", shownVersion(version).view(), ", the library is ",
                          shownVersion(TARNEL_VERSION).view());
    diagnostics::setReason(__func__, Result::InvalidArgument);
    return TARNEL_INVALID_ARGUMENT;
}

const char *tarnelReason()
{
    return diagnostics::reason();
}

const char *tarnelCodeName(unsigned int code)
{
    return tarnelLib::describe(static_cast<Result>(code)).name;
}

const char *tarnelCodeAdvice(unsigned int code)
{
    return tarnelLib::describe(static_cast<Result>(code)).advice;
}

unsigned int tarnelSuspicions()
{
    return diagnostics::suspicions.count();
}
