/// Signals and their listeners.
#pragma once

#include "znGeom/foundation/signals/signal.h"
