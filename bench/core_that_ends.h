/* The exit status by which the stand-in for the core tells that it was started as a core is. */

#pragma once

enum { CORE_STATUS = 42 };
