#include "Velto/Commands/ProgramRun.h"

int main(int argc, char** argv) { return VeltoTouch::Velto::runProgram(argc, argv); }
