// Controls what happens to memory that one step frees and the next allocates again.
#ifndef VISTATRIM_CLI_BATCH_FREED_MEMORY_H
#define VISTATRIM_CLI_BATCH_FREED_MEMORY_H

namespace vistaTrim::cli {

// For runs over many photographs, each of which allocates the same large blocks. Blocks returned to
// the system would have to be faulted in again page by page, which takes longer than writing to
// them. Call before the first worker starts.
void KeepFreedMemory();

// Call between reading and analysis. Returns the memory that decoding used to the system, unless
// KeepFreedMemory was called: otherwise it sits idle during the analysis, which is the memory peak.
void ReturnFreedMemory();

} // namespace vistaTrim::cli

#endif
