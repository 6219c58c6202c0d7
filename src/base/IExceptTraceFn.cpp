#include "qarq/base/IExceptTraceFn.hpp"

IExceptTraceFn::IExceptTraceFn() = default;
IExceptTraceFn::~IExceptTraceFn() = default;
