/* Contract of the KESH pattern library (libkesh_pattern_25, symbol version
 * KESH_PATTERN). The same declarations serve the device library and the host
 * library built from emulator/, so one tool binary runs against either.
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

_kesh_player* keshCreatePlayer(const char* name);
int keshDestroyPlayer(_kesh_player* player);
_pattern* keshCreatePattern(_kesh_player* player, const void* binary, uint32_t size, const char* name);
int keshDestroyPattern(_pattern* pattern);
_pattern_graph* keshCreatePatternGraph(_kesh_player* player, const char* name);
int keshDestroyPatternGraph(_pattern_graph* graph);
int keshSetPatternGraphOption(_pattern_graph* graph, pattern_graph_option_type option, int32_t value);
int keshAddPattern(_pattern_graph* graph, _pattern* pattern, uint32_t reserved0, uint32_t reserved1,
                   _pattern_node_handle** node, const char* name);
int keshSetPatternPack(_pattern_graph* graph, uint32_t count, _pattern_node_handle** nodes);
int keshBuildPatternGraph(_pattern_graph* graph);
int keshDestroyPatternNode(_pattern_node_handle* node);
int keshGetPatternArgInfoSize(_pattern* pattern, pattern_arg_info_type type, uint32_t* size);
int keshGetPatternArgInfo(_pattern* pattern, pattern_arg_info_type type, void* data, uint32_t size);
_kesh_mem* keshCreateMem(_kesh_player* player, uint32_t size, const char* name);
void* keshMapMem(_kesh_mem* mem);
int keshFlushMem(_kesh_mem* mem);
int keshInvalidateMem(_kesh_mem* mem);
int keshUnmapMem(_kesh_mem* mem);
int keshDestroyMem(_kesh_mem* mem);
int keshSetPatternNodeArg(_pattern_node_handle* node, uint32_t index, _kesh_mem* mem, uint32_t size);
int keshSetPatternNodeOption(_pattern_node_handle* node, pattern_node_option_type option, int32_t value);
int keshUpdatePatternNode(_pattern_node_handle* node);
int keshPlayPatternGraph(_kesh_player* player, _pattern_graph* graph, uint32_t flags, _pattern_job** job);
int keshWaitPatternJob(_pattern_job* job);
int keshGetPatternNodeExecInfo(_pattern_job* job, _pattern_node_handle* node, uint32_t kind, int64_t* value);
int keshDestroyPatternJob(_pattern_job* job);

#ifdef __cplusplus
}
#endif

#endif /* KESH_PATTERN_H_ */
