// Includes by a path that does not begin at the root.
#pragma once

#include "Relative.h"
