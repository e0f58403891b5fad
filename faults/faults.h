#pragma once

namespace faults {

/// Requests for a resource, which can be made to fail.
struct Faults {
    bool isArmed = false;
    bool isLasting = false; ///< Whether they go on failing.
    int granted = 0;        ///< How many are granted before; below 0 after the first that was not.

    bool failsNow() { return isArmed && --granted < 0 && (isLasting || granted == -1); }
    [[nodiscard]] bool hasStruck() const { return granted < 0; }
};

} // namespace faults
