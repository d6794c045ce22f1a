#include "app/program.h"

#include "drive/cDrive.h"
#include "platform/cRegistry.h"
#include "platform/cTray.h"

namespace app {

Program::Program() = default;
Program::~Program() = default;

} // namespace app
