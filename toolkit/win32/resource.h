// The numbers of the controls in the dialog templates. Each name is the control's name in the core; the build
// makes the table that finds a control by its name from these lines, so they hold a name and a number and
// nothing else. Controls of the same name in two windows share a number. The strings and menu items of a
// control bear it, too.
#pragma once

// frmMain: instructions
#define Label15 1001
#define Label16 1002
#define Label17 1003
#define Label18 1004
#define Label19 1005
#define Label21 1006
#define Line1 1007
#define Line2 1008
#define Line3 1009
#define Line4 1010

// frmMain: the stick
#define Frame2 1020
#define cmdSearch 1021
#define lblCapPath 1022
#define lblLW 1023
#define cmdOpen 1024
#define lblCapLabel 1025
#define txtDT_Cap 1026
#define Command1 1027
#define lblCapFAT 1028
#define txtFAT 1029
#define Picture1 1030
#define lblCapSize 1031
#define lblHDSize 1032
#define lblSize_0 1033
#define lblHDUsedColor 1034
#define lblCapUsed 1035
#define lblHDUsed 1036
#define lblSize_1 1037
#define lblHDFreeColor 1038
#define lblCapFree 1039
#define lblHDFree 1040
#define lblSize_2 1041
#define lblCapUnit 1042
#define cmbSize 1043
#define settingsLine 1044
#define lblCapSettings 1045
#define lblCapOpenPath 1046
#define txtOpenPath 1047
#define cmdSaveOnStick 1048
#define chkAuto 1049
#define Frame4 1050
#define cmdtest 1051

// frmMain: the receiver
#define Firm_Option_0 1060
#define Firm_Option_1 1061
#define Firm_Option_2 1062
#define Firm_Option_3 1063
#define Firm_Option_4 1064
#define Firm_Option_5 1065
#define Firm_Option_6 1066
#define Firm_Option_7 1067
#define Firm_Option_8 1068
#define Image1 1069
#define lbl_firmstand 1070
#define lbl_Aenderung 1071

// frmMain: the channel list
#define Sett_Option_0 1080
#define Sett_Option_1 1081
#define Sett_Option_2 1082
#define Sett_Option_3 1083
#define Sett_Option_4 1084
#define lbl_settstand 1085
#define lbl_reihenfolge 1086

// frmMain: the job, the news, the state of affairs
#define cmdChoose 1090
#define frm_News 1091
#define lbl_news_0 1092
#define lbl_news_1 1093
#define lbl_news_2 1094
#define lbl_news_3 1095
#define StatusBar1 1096
#define prgUpdate 1097
#define prgUpdateText 1098
#define cmdHelp 1099

// frmMain: the menu that belongs to the tray icon
#define mnuPopup_0 1100
#define mnuPopup_1 1101
#define mnuPopup_2 1102
#define mnuPopup_3 1103

// frmAuswahl
#define Label1 1110
#define ListView1 1111
#define cmdOK 1112
#define cmdCancel 1113

// Form1, which has Label1, Command1 and Line1 as well
#define Label2 1120
#define Label3 1121
#define Command2 1122
#define lblDisk 1123
#define prgFormat 1124
#define prgFormatText 1125
