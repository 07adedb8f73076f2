#pragma once
// The main window's share of Kestrel.ini in the order start-up needs it: the
// profile named in [Hardware] is read first, then the [Port Standards] lists,
// which win over the profile's, then everything else of the main window.

#include <filesystem>

#include "config/hardware_profile.h"
#include "config/program_config.h"

namespace kestrel {

// Returns the profile in use (its lists are those it offered before [Port Standards] was read).
HardwareProfile LoadMainConfiguration(const std::filesystem::path &dataFolder, ProgramConfig &cfg);

} // namespace kestrel
