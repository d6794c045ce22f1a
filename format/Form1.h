#pragma once

class frmMain;

/// The assistant that formats a USB hard disk.
class Form1 {
public:
    explicit Form1(frmMain&) {}
    void show(frmMain*) {}
};
