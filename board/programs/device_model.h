/*
 * The models behind the virtual board's devices, through /dev/device_model. A failure of that
 * device ends the program.
 */
#ifndef DEVICE_MODEL_H
#define DEVICE_MODEL_H

#include <sys/types.h>

/* Puts the devices into the state of this number; what they saw so far is forgotten. */
void model_state(unsigned number);

/* Any line that the device takes, such as "answers 6B42 -1". */
void model_tell(const char* line);

/* What the devices saw, a call a line; of one process, or of all (0). The caller frees it. */
char* model_saw(pid_t process);

#endif
