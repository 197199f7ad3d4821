#pragma once
// The three things that a set of resources becomes. The same resources give the same bytes.

#include <string>
#include <vector>

#include "resource.h"

namespace korrc {

/// The resource section of a portable executable: the directory tree in order of type, name and language, and
/// the data; data addresses are `base` plus the offset in the section. `resources` are in that order.
Bytes sectionImage(const std::vector<Resource>& resources, std::uint32_t base);

/// A compiled resource file for the Windows linker.
Bytes resourceFile(const std::vector<Resource>& resources);

/// A source file that links the resources into a native module, as its `korResourceTable`.
Bytes tableSource(const std::vector<Resource>& resources);

/// A resource-only library: a portable executable for 32-bit Windows without entry point and imports, whose
/// one export `RequiredResourceDllVersion` returns `requiredVersion`.
Bytes library(const std::vector<Resource>& resources, const std::string& fileName,
              std::uint32_t requiredVersion);

}  // namespace korrc
