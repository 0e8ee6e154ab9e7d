// Numbers of the component's own resources, for the compiler and the resource compiler.
#pragma once

#define RES_REGISTRATION_SCRIPT 103
#define RES_TYPE_LIBRARY 1
