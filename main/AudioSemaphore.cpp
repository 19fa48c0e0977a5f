#include "AudioSemaphore.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "PlatformLog.h"

namespace {

const char kTag[] = "AS";
const int kDebug = 3;
const int kError = 6;
// Its presence turns on the debug message; nothing else reads it.
const char kTraceMarker[] = "/media/flash/nvm/tracelet";

}  // namespace

AudioSemaphore::AudioSemaphore() {
    if (sem_init(&sem_, 0, 0) != 0) {
        __android_log_print(kError, kTag, "[%s][%u]init sem failed\n", "AudioSemaphore", 49u);
    }
}

AudioSemaphore::~AudioSemaphore() {
    sem_destroy(&sem_);
}

void AudioSemaphore::signal() {
    int value = 0;
    const int got = sem_getvalue(&sem_, &value);
    if (got != 0) {
        if (access(kTraceMarker, F_OK) == 0) {
            __android_log_print(kDebug, kTag, "[%s][%u]sem get value failed, ret=%d", "signal", 94u,
                                got);
        }
        return;
    }
    if (value > 0) {
        return;
    }
    const int posted = sem_post(&sem_);
    if (posted == -1) {
        __android_log_print(kError, kTag, "[%s][%u]sem post failed, ret=%d\n", "signal", 100u,
                            posted);
    }
}

void AudioSemaphore::wait() {
    if (sem_wait(&sem_) != 0) {
        const int err = errno;
        __android_log_print(kError, kTag, "[%s][%u]sem wait failed:%s\n", "wait", 64u,
                            std::strerror(err));
    }
}
