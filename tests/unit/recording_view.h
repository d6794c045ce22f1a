#pragma once

#include "toolkit/control.h"

#include <vector>

namespace unit {

/// Takes note of what a control tells its view.
class RecordingView : public toolkit::View {
public:
    void show(toolkit::Property property) override { shown.push_back(property); }

    std::vector<toolkit::Property> shown;
};

} // namespace unit
