// Splitting a command set's line into the words of its argument vector.
// Stateless; thread-safe.
#ifndef KESH_SETTINGS_WORD_SPLIT_H_
#define KESH_SETTINGS_WORD_SPLIT_H_

#include <string>
#include <vector>

namespace kesh::settings {

/// `programName` followed by the words of `line` cut at every single blank:
/// empty words are kept, except that a blank at the very end adds none.
std::vector<std::string> splitCommandWords(const char* programName, const std::string& line);

}  // namespace kesh::settings

#endif  // KESH_SETTINGS_WORD_SPLIT_H_
