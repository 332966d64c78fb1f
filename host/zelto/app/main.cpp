#include "app/command_line.h"

int main(int argc, char** argv) { return zelto::run_command_line(argc, argv); }
