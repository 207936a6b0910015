#include "player_process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "e2e_config.h"

extern char** environ;

namespace kesh::testing {
namespace {

std::string readWhole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

bool isInjectedSetting(const char* entry) {
  return std::strncmp(entry, "KESH_EMU_FAIL=", 14) == 0 || std::strncmp(entry, "KESH_EMU_TRACE=", 15) == 0;
}

std::vector<std::string> environmentFor(const EnvVars& env) {
  std::vector<std::string> entries;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    if (!isInjectedSetting(*entry)) entries.emplace_back(*entry);
  }
  for (const auto& [name, value] : env) entries.push_back(name + "=" + value);
  return entries;
}

// execve does not search PATH, so a launcher given by name is looked up here.
std::string resolveProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  if (name.find('/') != std::string::npos || path == nullptr) return name;
  std::istringstream dirs(path);
  std::string dir;
  while (std::getline(dirs, dir, ':')) {
    const std::string candidate = (dir.empty() ? "." : dir) + "/" + name;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return name;
}

std::vector<std::string> commandFor(const std::vector<std::string>& args) {
  std::vector<std::string> command;
  for (const char* word : kLauncher) {
    if (word != nullptr) command.push_back(command.empty() ? resolveProgram(word) : word);
  }
  command.push_back(playerPath());
  command.insert(command.end(), args.begin(), args.end());
  return command;
}

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> result;
  for (std::string& word : words) result.push_back(word.data());
  result.push_back(nullptr);
  return result;
}

}  // namespace

const std::string& playerPath() {
  static const std::string path = KESH_PLAYER_PATH;
  return path;
}

PlayerResult runPlayer(const std::string& workDir, const std::vector<std::string>& args, const EnvVars& env) {
  std::vector<std::string> command = commandFor(args);
  std::vector<std::string> environment = environmentFor(env);
  std::vector<char*> argv = pointers(command);
  std::vector<char*> envp = pointers(environment);
  const std::string outPath = workDir + "/stdout.log";
  const std::string errPath = workDir + "/stderr.log";

  PlayerResult result;
  const pid_t child = fork();
  if (child == 0) {
    // Only async-signal-safe calls between fork and exec.
    const int out = open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int err = open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (out < 0 || err < 0 || chdir(workDir.c_str()) != 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0) _exit(126);
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  if (child < 0) return result;
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return result;
  }
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  result.out = readWhole(outPath);
  result.err = readWhole(errPath);
  return result;
}

}  // namespace kesh::testing
