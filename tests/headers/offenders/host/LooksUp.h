// Includes a higher floor.
#pragma once

#include <vector>

#include "repository/LooksUp.h"
