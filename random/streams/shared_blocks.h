// The process-wide table of read-only blocks that chunks of several streams may share.
#pragma once

#include "random/streams/stream.h"

namespace tarn::random {

// Below this many entries a chunk with a key still gets one; the table itself holds one more.
constexpr uint32_t kSharedBlocksForChunks = 127;

inline bool has_key(const uint64_t key[2]) { return key[0] != 0 || key[1] != 0; }

// Whether the table knows the key, at this moment.
bool is_shared(const uint64_t key[2]);

// Entries in use. Read without the lock, so it may be out of date at once: a hint that decides between sharing a block
// and keeping it private, which are both right.
uint32_t shared_block_count();

// A new chunk's data under its key. With a key that the table knows, takes a reference and sets chunk->data to the
// table's block; otherwise enters the chunk's own data, or clears the key when the table is full.
void share(tarn_chunk* chunk);

// Drops a reference to a key; frees the block with the last one.
void unshare(const uint64_t key[2]);

}
