#pragma once

/// The platform's registry.
class cRegistry {};
