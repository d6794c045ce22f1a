#include "toolkit/pump.h"

#include "toolkit/backend.h"
#include "toolkit/dispatch.h"

namespace toolkit {

void DoEvents() {
    backend::pumpEvents();
    throwIfEnding();
}

} // namespace toolkit
