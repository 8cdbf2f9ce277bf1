// Ctrl-C ends a run between photographs and not inside one.
#ifndef VISTATRIM_CLI_BATCH_INTERRUPTION_H
#define VISTATRIM_CLI_BATCH_INTERRUPTION_H

namespace vistaTrim::cli {

// From now on SIGINT, SIGTERM and SIGHUP are only noted. The second one of a kind ends the
// program at once; files under work then go away unnamed or stay as hidden leftovers, and what
// was finished stands.
void NoteInterruptions();

// The number of the signal that was noted, 0 if none was.
int NotedInterruption();

} // namespace vistaTrim::cli

#endif
