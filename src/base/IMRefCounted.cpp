#include "qarq/base/IMRefCounted.hpp"

IMRefCounted::~IMRefCounted() = default;
