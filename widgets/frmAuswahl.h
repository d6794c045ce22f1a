#pragma once

#include "app/program.h"
#include "toolkit/form.h"

/// The dialog in which the user picks one of several sticks.
class frmAuswahl {
public:
    explicit frmAuswahl(app::Program&) {}
    void showModal(toolkit::Form&) {}
};
