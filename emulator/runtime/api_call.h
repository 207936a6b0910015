// The bookkeeping of one C call: counts it for fault injection, collects its
// arguments for the trace (only when tracing is on), runs its body with every
// exception turned into a failure, and writes its one trace line:
//   name(arg=value, ..., out=value) = result[ (note)]
// One object per call, used by the calling thread only.
#ifndef KESH_EMULATOR_RUNTIME_API_CALL_H_
#define KESH_EMULATOR_RUNTIME_API_CALL_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "runtime/functions.h"
#include "runtime/handles.h"

namespace kesh::runtime {

/// Status of every non-creating call: 0 success, -1 failure.
inline constexpr int kOk = 0;
inline constexpr int kFailed = -1;

class ApiCall {
 public:
  /// Starts the call of `fn`: counts it and decides whether it is injected to fail.
  explicit ApiCall(Fn fn);

  /// Adds a string argument (null prints as null).
  ApiCall& text(const char* key, const char* value);
  /// Adds an integer argument.
  ApiCall& number(const char* key, int64_t value);
  /// Adds a handle argument (letter and id, or null).
  ApiCall& handle(const char* key, Kind kind, const void* value);
  /// Adds an argument already formatted; `format` runs only when tracing.
  template <class F>
  ApiCall& formatted(const char* key, F format) {
    if (tracing_) {
      try {
        addArg(key, format());
      } catch (...) {
        tracing_ = false;  // out of memory: this call goes untraced
      }
    }
    return *this;
  }

  /// Declares an output parameter; it prints "-" unless set before the end.
  ApiCall& output(const char* key);
  /// Sets the declared output `key` to a number (called inside a body).
  void setOutput(const char* key, int64_t value);
  /// Sets the declared output `key` to a handle (called inside a body).
  void setOutputHandle(const char* key, Kind kind, HandleId id);
  /// Adds a note after the result, e.g. why a wait failed (called inside a body).
  void note(std::string text);

  /// Runs `body` (returning kOk or kFailed) unless injected; writes the trace.
  template <class Body>
  int run(Body body) {
    int status = kFailed;
    if (!injected_) {
      try {
        status = body() == kOk ? kOk : kFailed;
      } catch (...) {
        status = kFailed;
      }
    }
    finish(status == kOk ? "0" : "-1");
    return status;
  }

  /// Runs `body` (returning the new handle's id, 0 for failure) unless
  /// injected; writes the trace with the handle as the result.
  template <class Body>
  HandleId create(Kind kind, Body body) {
    HandleId id = 0;
    if (!injected_) {
      try {
        id = body();
      } catch (...) {
        id = 0;
      }
    }
    finish(handleText(kind, id));
    return id;
  }

  /// Runs `body` (returning a pointer, null for failure) unless injected;
  /// the trace shows a non-null result as "mapped" so traces stay comparable.
  template <class Body>
  void* pointer(Body body) {
    void* result = nullptr;
    if (!injected_) {
      try {
        result = body();
      } catch (...) {
        result = nullptr;
      }
    }
    finish(result != nullptr ? "mapped" : "null");
    return result;
  }

 private:
  static std::string handleText(Kind kind, HandleId id);
  void addArg(const char* key, const std::string& value);
  void setOutputText(const char* key, const std::string& value);
  void finish(const std::string& result);

  Fn fn_;
  bool injected_;
  bool tracing_;
  std::string args_;
  std::vector<std::pair<std::string, std::string>> outputs_;
  std::string note_;
};

}  // namespace kesh::runtime

#endif  // KESH_EMULATOR_RUNTIME_API_CALL_H_
