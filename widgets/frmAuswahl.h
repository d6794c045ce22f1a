#pragma once

#include "app/program.h"
#include "toolkit/button.h"
#include "toolkit/form.h"
#include "toolkit/label.h"
#include "toolkit/list_view.h"
#include "widgets/cLV.h"

#include <cstdint>
#include <memory>
#include <string>

/// The dialog in which the user picks one of several sticks. "Verwenden" makes the chosen one the current
/// stick; any other way out changes nothing.
class frmAuswahl : public toolkit::Form {
public:
    explicit frmAuswahl(app::Program& program);

    toolkit::Label Label1{"Label1"};
    toolkit::ListView ListView1{"ListView1"};
    toolkit::Button cmdOK{"cmdOK"};
    toolkit::Button cmdCancel{"cmdCancel"};

private:
    void Form_Load();
    void cmdOK_Click();

    app::Program& program_;
    std::unique_ptr<cLV> listHelper_;
    std::string selection_; ///< drive root
};
