#include "StopSemaphore.h"

// Constructed during static initialisation, before main installs the handler that posts it.
AudioSemaphore stopSemaphore;
