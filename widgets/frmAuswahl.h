#pragma once

#include "toolkit/button.h"
#include "toolkit/form.h"
#include "toolkit/label.h"
#include "toolkit/list_view.h"
#include "widgets/cLV.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// The dialog in which the user picks one of several sticks.
class frmAuswahl : public toolkit::Form {
public:
    /// A drive to pick.
    struct Candidate {
        std::string root; ///< `E:\`
        std::string label;
        std::string facts; ///< what else tells it from others, for the tool tip of its row
    };

    explicit frmAuswahl(std::vector<Candidate> candidates);

    /// "Verwenden": told before the dialog closes. Any other way out tells nothing.
    std::function<void(const std::string& root)> onChosen;

    toolkit::Label Label1{"Label1"};
    toolkit::ListView ListView1{"ListView1"};
    toolkit::Button cmdOK{"cmdOK"};
    toolkit::Button cmdCancel{"cmdCancel"};

private:
    void Form_Load();
    void cmdOK_Click();

    std::vector<Candidate> candidates_;
    std::unique_ptr<cLV> listHelper_;
    std::string selection_; ///< drive root
};
