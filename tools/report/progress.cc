#include "report/progress.h"

#include <unistd.h>

#include <cstdio>

namespace kesh::report {

namespace {

std::string clock(double seconds) {
  const long total = static_cast<long>(seconds + 0.5);
  char text[32];
  if (total >= 3600) {
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", total / 3600, total / 60 % 60, total % 60);
  } else {
    std::snprintf(text, sizeof text, "%ld:%02ld", total / 60, total % 60);
  }
  return text;
}

}  // namespace

std::string progressText(int64_t done, int64_t total, size_t failures, double elapsedSeconds) {
  std::string text = "run " + std::to_string(done);
  if (total > 0) text += "/" + std::to_string(total);
  text += ", " + std::to_string(failures) + (failures == 1 ? " failure" : " failures");
  text += ", " + clock(elapsedSeconds) + " elapsed";
  if (total > 0 && done > 0 && done < total) {
    text +=
        ", about " + clock(elapsedSeconds / static_cast<double>(done) * static_cast<double>(total - done)) + " left";
  }
  return text;
}

Progress::Progress(bool enabled, int64_t totalRuns)
    : enabled_(enabled), total_(totalRuns), start_(std::chrono::steady_clock::now()), lastDraw_(start_) {}

void Progress::update(const Results& results) {
  if (!enabled_) return;
  const auto now = std::chrono::steady_clock::now();
  if (drawn_ && now - lastDraw_ < std::chrono::milliseconds(100)) return;
  lastDraw_ = now;
  int64_t done = 0;
  for (const Run& run : results.runs) done += run.end == RunEnd::kIncomplete ? 0 : 1;
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  const std::string line = "\r\033[K" + progressText(done, total_, results.failedVerdicts, elapsed);
  drawn_ = write(2, line.data(), line.size()) > 0;
}

void Progress::erase() {
  if (!drawn_) return;
  static const char kErase[] = "\r\033[K";
  drawn_ = write(2, kErase, sizeof kErase - 1) < 0;
}

}  // namespace kesh::report
