// What becomes of the memory that one step frees and the next one asks for again.
#ifndef VISTATRIM_CLI_BATCH_FREED_MEMORY_H
#define VISTATRIM_CLI_BATCH_FREED_MEMORY_H

namespace vistaTrim::cli {

// For runs over many photographs: each asks for the same large blocks as the one before. Blocks
// that went back to the system would have to be fetched again page by page, which takes longer
// than writing to them. Call before the first worker begins.
void KeepFreedMemory();

// Between reading and analysis: what decoding took stands idle beside the maps, which are the
// peak. Gives it back to the system, unless freed memory is kept.
void ReturnFreedMemory();

} // namespace vistaTrim::cli

#endif
