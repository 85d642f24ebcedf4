#include <iostream>

#include "host/program.h"
#include "platform/process.h"

int main(int argc, char** argv)
{
    return kelmora::host::RunProgram(kelmora::platform::ProgramArguments(argc, argv), std::cout, std::cerr);
}
