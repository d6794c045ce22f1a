#pragma once

#include "toolkit/button.h"

namespace toolkit {

/// An item of a menu. A caption of "-" is a separator.
using MenuItem = Button;

} // namespace toolkit
