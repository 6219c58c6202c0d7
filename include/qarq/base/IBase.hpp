// The empty root of the class tree.
//
// It has no fields and no virtual operations, so deriving from it costs
// nothing; it only marks a class as one of the library's own.
#pragma once

#include "qarq/export.hpp"

class QARQ_API IBase {};
