// The diagnostics library: trace, error log, numbered messages, the audit
// lock and log roll-over.
#pragma once

#include "qarq/ras/HeskFile.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "qarq/ras/HeskMutex.hpp"
#include "qarq/ras/HeskTrace.hpp"
