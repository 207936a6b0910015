#include "report/library_probe.h"

#include <elf.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

namespace kesh::report {

namespace {

constexpr char kLibraryName[] = "libkesh_pattern_25.so";

bool namesLibrary(const std::string& path) {
  const size_t slash = path.rfind('/');
  return path.compare(slash == std::string::npos ? 0 : slash + 1, std::string::npos, kLibraryName) == 0;
}

std::string hex(const unsigned char* bytes, size_t size) {
  static const char kDigits[] = "0123456789abcdef";
  std::string text;
  for (size_t i = 0; i < size; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}

// The GNU build id among the notes in `notes`.
std::string buildIdIn(const std::string& notes) {
  size_t at = 0;
  while (at + 12 <= notes.size()) {
    uint32_t nameSize, descSize, type;
    std::memcpy(&nameSize, notes.data() + at, 4);
    std::memcpy(&descSize, notes.data() + at + 4, 4);
    std::memcpy(&type, notes.data() + at + 8, 4);
    const size_t name = at + 12;
    const size_t desc = name + ((nameSize + 3) & ~3u);
    if (desc + descSize > notes.size()) break;
    if (type == NT_GNU_BUILD_ID && nameSize == 4 && notes.compare(name, 4, std::string("GNU\0", 4)) == 0) {
      return hex(reinterpret_cast<const unsigned char*>(notes.data() + desc), descSize);
    }
    at = desc + ((descSize + 3) & ~3u);
  }
  return "";
}

// The build id from the note segments of an ELF image of class Ehdr/Phdr.
template <typename Ehdr, typename Phdr>
std::string buildIdOf(const std::string& image) {
  if (image.size() < sizeof(Ehdr)) return "";
  Ehdr header;
  std::memcpy(&header, image.data(), sizeof header);
  for (size_t k = 0; k < header.e_phnum; ++k) {
    const size_t at = header.e_phoff + k * header.e_phentsize;
    if (at + sizeof(Phdr) > image.size()) break;
    Phdr segment;
    std::memcpy(&segment, image.data() + at, sizeof segment);
    if (segment.p_type != PT_NOTE || segment.p_offset + segment.p_filesz > image.size()) continue;
    const std::string id = buildIdIn(image.substr(segment.p_offset, segment.p_filesz));
    if (!id.empty()) return id;
  }
  return "";
}

}  // namespace

std::string mappedLibrary(pid_t pid) {
  std::ifstream maps("/proc/" + std::to_string(pid) + "/maps");
  std::string line;
  while (std::getline(maps, line)) {
    const size_t slash = line.find('/');
    if (slash != std::string::npos && namesLibrary(line.substr(slash))) return line.substr(slash);
  }
  return "";
}

std::string resolvedLibrary(const std::string& program, const std::vector<std::string>& env) {
  int out[2];
  if (pipe(out) != 0) return "";
  const pid_t child = fork();
  if (child < 0) return "";
  if (child == 0) {
    dup2(out[1], 1);
    close(out[0]);
    close(out[1]);
    std::vector<char*> envp;
    for (const std::string& entry : env) envp.push_back(const_cast<char*>(entry.c_str()));
    static char trace[] = "LD_TRACE_LOADED_OBJECTS=1";
    envp.push_back(trace);
    envp.push_back(nullptr);
    char* argv[] = {const_cast<char*>(program.c_str()), nullptr};
    execve(program.c_str(), argv, envp.data());
    _exit(127);
  }
  close(out[1]);
  std::string listing;
  char buffer[4096];
  for (ssize_t n; (n = read(out[0], buffer, sizeof buffer)) > 0;) listing.append(buffer, static_cast<size_t>(n));
  close(out[0]);
  int status = 0;
  waitpid(child, &status, 0);
  // Lines read "\tNAME => PATH (ADDRESS)".
  std::istringstream lines(listing);
  std::string line;
  while (std::getline(lines, line)) {
    const size_t arrow = line.find(" => ");
    if (arrow == std::string::npos || line.find(kLibraryName) > arrow) continue;
    const size_t begin = arrow + 4;
    const size_t end = line.find(" (", begin);
    return line.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
  }
  return "";
}

LibraryFacts describeLibrary(const std::string& path, const std::string& how) {
  LibraryFacts facts;
  facts.path = path;
  facts.how = how;
  std::ifstream file(path, std::ios::binary);
  const std::string image((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (image.size() < EI_NIDENT || image.compare(0, 4, ELFMAG) != 0) return facts;
  facts.buildId = image[EI_CLASS] == ELFCLASS64 ? buildIdOf<Elf64_Ehdr, Elf64_Phdr>(image)
                                                : buildIdOf<Elf32_Ehdr, Elf32_Phdr>(image);
  facts.hostLibrary = image.find("KESH_EMU_FAIL") != std::string::npos;
  return facts;
}

}  // namespace kesh::report
