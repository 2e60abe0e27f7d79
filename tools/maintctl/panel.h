// The front panel as text.
#pragma once

#include "maint/led_state.h"
#include "tools/maintctl/json.h"
#include "tools/maintctl/screen.h"

// On a part of a row: "A*  B.  C~  D.  E.  F.   1 *.*  2 ...", 73 columns.
void panel_showShort(Screen& screen, const LedStateRecord& panel);

// Members of an open object: "ledA":1 to "ledF", "group1":[1,0,1] to "group7".
void panel_json(Json& json, const LedStateRecord& panel);

// How an indicator is: "off", "on", "pattern", "alert".
const char* indicator_name(uint8_t state);
Colour indicator_colour(uint8_t state);
