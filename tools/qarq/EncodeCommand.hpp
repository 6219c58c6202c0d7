// `qarq encode`: see EncodeCommand.cpp for the options.
#pragma once

namespace qarqtool {

/// Runs the subcommand on argv[first..argc); returns the exit status.
int runEncode(int argc, char** argv, int first);

}  // namespace qarqtool
