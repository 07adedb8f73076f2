#pragma once
// Saving an environment the user asked for: the file on disk stays as it was
// when the save fails, and the change mark stays set; the caller shows the result.

#include <filesystem>

#include "base/result.h"
#include "config/environment.h"

namespace kestrel {

// Clears the change mark once saved; a failure is kMsgEnvironmentNotSaved with the reason.
[[nodiscard]] Result SaveChangedEnvironment(const Environment &env, const std::filesystem::path &file,
                                            EnvironmentChangeFlag &flag);

} // namespace kestrel
