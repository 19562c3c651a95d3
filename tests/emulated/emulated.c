// Stands in for a program that was built for another architecture: runs that program in an emulator
// of user programs (qemu-user) and passes its arguments on.
//
// The variables of the dynamic loader concern the emulated program. The emulator gets them as
// options, because this machine's loader would complain about libraries of the other architecture.
// For the same reason this program is linked statically.
//
// The build defines PROGRAM and EMULATOR, the words of the emulator's command.

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

enum { OPTIONS = 2 }; // words in front of the program, besides those for variables

int main(int argc, char** argv) {
    static char* const emulator[] = {EMULATOR};
    const size_t emulatorWords = sizeof emulator / sizeof *emulator;
    size_t variables = 0;
    while (environ[variables] != NULL) {
        ++variables;
    }
    char** const command =
        calloc(emulatorWords + 2 * variables + OPTIONS + 1 + (size_t)argc, sizeof *command);
    if (command == NULL || argc < 1) {
        return EXIT_FAILURE;
    }
    memcpy(command, emulator, sizeof emulator);
    char** word = command + emulatorWords;
    char** kept = environ;
    for (size_t i = 0; i < variables; ++i) {
        char* const variable = environ[i];
        if (strncmp(variable, "LD_", 3) == 0) {
            *word++ = "-E"; // sets a variable for the program
            *word++ = variable;
        } else {
            *kept++ = variable;
        }
    }
    *kept = NULL;
    *word++ = "-0"; // the program's name for itself
    *word++ = argv[0];
    *word++ = PROGRAM;
    memcpy(word, argv + 1, (size_t)argc * sizeof *argv); // the last one is the null pointer
    execv(emulator[0], command);
    perror(emulator[0]);
    return 127;
}
