#pragma once
// Saving an environment the user asked for: a failure is reported once through
// the prompt interface and the file on disk stays as it was.

#include <filesystem>

#include "base/prompt.h"
#include "config/environment.h"

namespace kestrel {

// True when saved; the change flag is cleared then.
bool SaveEnvironmentReported(Prompter &prompter, const Environment &env, const std::filesystem::path &file,
                             EnvironmentChangeFlag &flag);

} // namespace kestrel
