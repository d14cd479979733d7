// What a step of the project's history did.
#pragma once

namespace engine {

// The numbers stand in the project's file.
enum class StepKind { placing = 1, relinking = 2, moving = 3, trimming = 4, removing = 5 };

} // namespace engine
