#pragma once

#include <memory>
#include <string>

#include "VorselKelp/Export.h"
#include "VorselKelp/platform/Device.h"

namespace VorselKelp::system {

/// The machine that the process runs on, as it describes itself: the distribution by its os-release file (in
/// a sandbox by the host's), the hardware by its firmware, the language by the locale's variables. Nothing
/// that identifies one machine among others of its kind is read.
///
/// What firmware leaves blank or fills with a placeholder is not told: the maker is empty then, and the
/// product's name the processor's architecture. System and hardware are read once, when somebody asks for
/// them first; language and time zone whenever they are asked for. A desk has no orientation: it is always
/// landscape. Any thread.
///
/// `root` is where "etc", "usr", "run" and "sys" lie.
[[nodiscard]] VORSELKELP_API std::shared_ptr<platform::Device> makeHostDevice(std::string root = "/");

}  // namespace VorselKelp::system
