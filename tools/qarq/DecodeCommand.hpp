// `qarq decode`: see DecodeCommand.cpp for the options.
#pragma once

namespace qarqtool {

/// Runs the subcommand on argv[first..argc); returns the exit status.
int runDecode(int argc, char** argv, int first);

}  // namespace qarqtool
