// Ctrl-C ends a run between photographs, not in the middle of one.
#ifndef VISTATRIM_CLI_BATCH_INTERRUPTION_H
#define VISTATRIM_CLI_BATCH_INTERRUPTION_H

namespace vistaTrim::cli {

// From now on SIGINT, SIGTERM and SIGHUP are only recorded. A second one of the same kind ends the
// program at once; files in progress then stay behind as hidden temporary files until the next run
// into the same folder deletes them. Finished files stay.
void NoteInterruptions();

// The recorded signal's number, or 0.
int NotedInterruption();

} // namespace vistaTrim::cli

#endif
