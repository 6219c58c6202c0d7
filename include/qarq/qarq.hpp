// Umbrella header of the qarq library.
#pragma once

#include "qarq/version.hpp"
#include "qarq/base/Version.hpp"
#include "qarq/base/Os.hpp"
#include "qarq/ras/MessageCatalogue.hpp"
#include "qarq/ras/qarzras.hpp"
#include "qarq/vorn/VornDbcs.hpp"
#include "qarq/vorn/VornDbcsCompare.hpp"
#include "qarq/vorn/VornNlsPEng.hpp"
#include "qarq/vorn/VornNlsTranslateCp.hpp"
