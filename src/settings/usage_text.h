// The tool's usage text, line by line: what -h prints, and what readers of the
// tool's output recognise. Immutable; safe from any thread.
#ifndef KESH_SETTINGS_USAGE_TEXT_H_
#define KESH_SETTINGS_USAGE_TEXT_H_

#include <vector>

namespace kesh::settings {

/// The usage lines in order, without their line ends.
const std::vector<const char*>& usageLines();

}  // namespace kesh::settings

#endif  // KESH_SETTINGS_USAGE_TEXT_H_
