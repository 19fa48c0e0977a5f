#include <cerrno>
#include <ctime>

#include "AudioThread.h"

// A signal (the daemon handles several) must not shorten the sleep.
void AudioSleepMs(unsigned int milliseconds) {
    timespec left{static_cast<time_t>(milliseconds / 1000u),
                  static_cast<long>(milliseconds % 1000u) * 1000000L};
    while (nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
}
