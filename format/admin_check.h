#pragma once

namespace format {

/// True when the local group "Administratoren" lists the user (platform::userName()) itself. A member by way
/// of another group is none, and where there is no group of that name nobody is: this is intended.
bool IsUserAdmin();

} // namespace format
