/// Where the library writes: the debug channel, messages for the user, and timing.
#pragma once

#include "znGeom/foundation/output/app_output.h"
#include "znGeom/foundation/output/debug_channel.h"
#include "znGeom/foundation/output/stop_watch.h"
#include "znGeom/foundation/output/text_sink.h"
