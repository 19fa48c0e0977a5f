#pragma once

#include "AudioSemaphore.h"

// SIGUSR1 posts it; the main thread waits on it and then shuts down in order.
extern AudioSemaphore stopSemaphore;
