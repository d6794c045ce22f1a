#include "tests/conformance/known_difference.h"

namespace conformance {

bool knownDifference(Differs /*who*/, const std::string& /*what*/, const std::string& /*reference*/) {
    return false;
}

} // namespace conformance
