#pragma once

namespace VeltoTouch::Velto {

// Does what the command line asks for, on the calling thread, and returns the exit status. What is wrong goes to the
// standard error. SIGPIPE is ignored from then on.
[[nodiscard]] int runProgram(int argc, char** argv);

} // namespace VeltoTouch::Velto
