/* Contract of the KESH pattern library (libkesh_pattern_25, symbol version
 * KESH_PATTERN). The same declarations serve the device library and the host
 * library, so one program binary runs against either. This header is the
 * only thing the tool and the host library share.
 *
 * Status convention: a function that creates a handle returns it (null means
 * failure); every other function returns 0 on success and nonzero on failure.
 */
#ifndef KESH_PATTERN_H_
#define KESH_PATTERN_H_

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct _kesh_player _kesh_player;
typedef struct _pattern _pattern;
typedef struct _pattern_graph _pattern_graph;
typedef struct _pattern_node_handle _pattern_node_handle;
typedef struct _pattern_job _pattern_job;
typedef struct _kesh_mem _kesh_mem;

typedef enum pattern_node_option_type {
  PATTERN_NODE_OPTION_BOOST = 0,
  PATTERN_NODE_OPTION_CORE_AFFINITY = 1
} pattern_node_option_type;

typedef enum pattern_graph_option_type {
  PATTERN_GRAPH_OPTION_HARD_LIMIT = 0,
  PATTERN_GRAPH_OPTION_SOFT_LIMIT = 1
} pattern_graph_option_type;

typedef enum pattern_arg_info_type {
  PATTERN_ARG_INFO_NUM = 0,
  PATTERN_ARG_INFO_INDEX = 1,
  PATTERN_ARG_INFO_NAME = 2,
  PATTERN_ARG_INFO_NO_ALLOC = 3,
  PATTERN_ARG_INFO_SIZE = 4
} pattern_arg_info_type;

typedef enum pattern_node_exec_info_type {
  PATTERN_NODE_EXEC_INFO_DRIVER_TIME = 0,
  PATTERN_NODE_EXEC_INFO_IP_TIME = 1,
  PATTERN_NODE_EXEC_INFO_END_TIMESTAMP = 0xFFFE,
  PATTERN_NODE_EXEC_INFO_START_TIMESTAMP = 0xFFFF
} pattern_node_exec_info_type;

/* Every function is thread-safe and reports failure only through its result;
 * docs/host_library.md describes the host library's behaviour in detail. */

/** Creates a player, the context on which everything else is created and played. */
_kesh_player* keshCreatePlayer(const char* name);
/** Releases a player; fails while a job played on it is unfinished. */
int keshDestroyPlayer(_kesh_player* player);
/** Validates and loads `size` bytes of pattern binary on a player; null if refused. */
_pattern* keshCreatePattern(_kesh_player* player, const void* binary, uint32_t size, const char* name);
/** Releases a pattern; nodes and jobs that run it are not disturbed. */
int keshDestroyPattern(_pattern* pattern);
/** Creates an empty graph on a player. */
_pattern_graph* keshCreatePatternGraph(_kesh_player* player, const char* name);
/** Releases a graph; jobs already played from it go on. */
int keshDestroyPatternGraph(_pattern_graph* graph);
/** Sets a graph option (hard or soft limit); a play takes the values current at that moment. */
int keshSetPatternGraphOption(_pattern_graph* graph, pattern_graph_option_type option, int32_t value);
/** Appends a node running `pattern` to an unbuilt graph and writes it to `*node`; reserved words must be 0. */
int keshAddPattern(_pattern_graph* graph, _pattern* pattern, uint32_t reserved0, uint32_t reserved1,
                   _pattern_node_handle** node, const char* name);
/** Packs `count` nodes of an unbuilt graph so that they start together. */
int keshSetPatternPack(_pattern_graph* graph, uint32_t count, _pattern_node_handle** nodes);
/** Ends the building of a graph; a built graph can be played any number of times. */
int keshBuildPatternGraph(_pattern_graph* graph);
/** Releases a node; a graph holding it can no longer be played. */
int keshDestroyPatternNode(_pattern_node_handle* node);
/** Writes to `*size` how many bytes argument information of `type` needs. */
int keshGetPatternArgInfoSize(_pattern* pattern, pattern_arg_info_type type, uint32_t* size);
/** Writes argument information of `type` into `size` bytes at `data`. */
int keshGetPatternArgInfo(_pattern* pattern, pattern_arg_info_type type, void* data, uint32_t size);
/** Creates `size` bytes of device memory on a player. */
_kesh_mem* keshCreateMem(_kesh_player* player, uint32_t size, const char* name);
/** Maps device memory into the process; the host address, or null. */
void* keshMapMem(_kesh_mem* mem);
/** Makes host writes to mapped memory visible to the device. */
int keshFlushMem(_kesh_mem* mem);
/** Makes device writes visible through the mapping. */
int keshInvalidateMem(_kesh_mem* mem);
/** Ends the mapping of device memory. */
int keshUnmapMem(_kesh_mem* mem);
/** Releases device memory; jobs that use it keep it until they end. */
int keshDestroyMem(_kesh_mem* mem);
/** Stages `mem` (at least the argument's size) for the argument of `index` of a node. */
int keshSetPatternNodeArg(_pattern_node_handle* node, uint32_t index, _kesh_mem* mem, uint32_t size);
/** Stages a node option (boost or core affinity). */
int keshSetPatternNodeOption(_pattern_node_handle* node, pattern_node_option_type option, int32_t value);
/** Applies the arguments and options staged on a node since its last update. */
int keshUpdatePatternNode(_pattern_node_handle* node);
/** Starts a job of a built graph and writes it to `*job`; returns without waiting. `flags` must be 0. */
int keshPlayPatternGraph(_kesh_player* player, _pattern_graph* graph, uint32_t flags, _pattern_job** job);
/** Blocks until a job is complete; nonzero if it failed. */
int keshWaitPatternJob(_pattern_job* job);
/** Writes execution information `kind` (pattern_node_exec_info_type) of a node of a completed job. */
int keshGetPatternNodeExecInfo(_pattern_job* job, _pattern_node_handle* node, uint32_t kind, int64_t* value);
/** Releases a completed job. */
int keshDestroyPatternJob(_pattern_job* job);

#ifdef __cplusplus
}
#endif

#endif /* KESH_PATTERN_H_ */
