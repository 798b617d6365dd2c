// The private messages windows and controls send each other: plain numbers
// from 1024 up, with the sender's control identifier and a value. One list
// for the whole program; everything names them from here.
#pragma once

#include <cstdint>

namespace lv {

enum PrivateMessage : int32_t {
    kMsgCurveChanged = 1024,    // the Curve control's curve, on the release of a drag
    kMsgValueChanged = 1025,    // a popup list's or another control's value
    kMsgAmountChanged = 1026,   // the Amount control
    kMsgSliderReleased = 1027,  // a slider's marker let go
    kMsgSliderMoved = 1028,     // a slider's marker moving
    kMsgColor = 1029,           // the colour picker's colour, live
    kMsgPickerClosed = 1030,    // the colour picker went away
    kMsgColorline = 1031,       // the Colorline control
    kMsgRecomputePreview = 1037,
    kMsgZoomIn = 1038,
    kMsgZoomOut = 1039,
    kMsgZoomSet = 1040,
    kMsgImagePicker = 1041,  // an input picker or ColorImg chose another picture
    kMsgText = 1042,         // a text field's text
    kMsgZoomActual = 1043,
    kMsgInteger = 1048,  // an Integer field's value
    kMsgToolBar = 1050,  // a tool bar grid's button
    kMsgZoomFit = 1051,
    kMsgZoomExpand = 1052,
    kMsgZoomInResize = 1053,
    kMsgProbeRead = 1054,  // the probe pressed on a picture
    kMsgProbeEnd = 1055,   // released
    kMsgProbeMove = 1056,  // dragged
    kMsgProbeLost = 1057,  // another owner or tool took over
    kMsgImageChanged = 1058,
    kMsgTab = 1059,      // Tab in a panel
    kMsgBackTab = 1060,  // Shift+Tab
    kMsgEscape = 1061,   // cancels a panel
    kMsgEnter = 1062,    // accepts a panel
    kMsgImageRenamed = 1063,
    kMsgViewChanged = 1066,
    kMsgDropChoice = 1067,       // a popup list's drop-down choice
    kMsgImageMenuChoice = 1076,  // the image menu's choice
    kMsgCompassReleased = 1077,
    kMsgCompassMoved = 1078,
};

}  // namespace lv
