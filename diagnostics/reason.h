#pragma once

#include "controller/result.h"
#include "diagnostics/fixedtext.h"

#include <QString>

/// Why calls fail: whoever finds out notes it, and the call's end makes it the reason that the client can ask for. Only
/// failing calls come here. Nothing throws, and where there is no memory, a general reason stands in.
namespace tarnelLib::diagnostics {

using Detail = FixedText<400>;

/// An empty detail of this thread, in place of an earlier one; null if there is no memory.
[[nodiscard]] Detail *newDetail() noexcept;

inline std::u16string_view unitsOf(const QString &text)
{
    return {reinterpret_cast<const char16_t *>(text.utf16()), static_cast<std::size_t>(text.size())};
}

/// Notes why the call in progress on this thread is failing.
template <class... Parts>
void note(const Parts &...parts) noexcept
{
    if (Detail *const detail = newDetail())
        (detail->append(parts), ...);
}

/// Takes what was noted last; empty if nothing was since.
[[nodiscard]] Detail takeDetail() noexcept;

/// Makes what was noted the reason of a call that failed, or else what the code says by itself.
void setReason(const char *function, Result result) noexcept;

/// The reason of this thread's last failed call; empty if none has failed.
[[nodiscard]] const char *reason() noexcept;

} // namespace tarnelLib::diagnostics
