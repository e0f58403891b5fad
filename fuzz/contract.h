#pragma once

#include "functions.h"

namespace fuzz {

/// What a call finds.
enum class Found {
    NoCache,
    SoundFile,
    SpoiledFile, ///< Where any step may fail.
};

/// Carries out a call. Ends the program if the answer is none of the contract, if something was stored by a call that
/// does not say so, or if what was stored is not what was handed out.
Answer callChecked(const Function &function, const Call &call, Found found);

} // namespace fuzz
