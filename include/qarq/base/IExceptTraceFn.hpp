// The default trace function of exceptions: the reports of IException go to
// standard error, one line a write. It changes nothing of TraceFn; it exists
// so that the default has a class of its own.
#pragma once

#include "qarq/base/IException.hpp"
#include "qarq/export.hpp"

class QARQ_API IExceptTraceFn : public IException::TraceFn {
public:
    IExceptTraceFn();
    ~IExceptTraceFn() override;
};
