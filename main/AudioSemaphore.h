#pragma once

#include <semaphore.h>

// One unnamed semaphore, private to the process, starting empty. Failures are only
// logged: its users carry on either way.
class AudioSemaphore {
public:
    AudioSemaphore();
    ~AudioSemaphore();
    AudioSemaphore(const AudioSemaphore&) = delete;
    AudioSemaphore& operator=(const AudioSemaphore&) = delete;

    // Posts unless a count is already pending, so repeated wake-ups collapse into one.
    void signal();
    // Takes a count, blocking until there is one; an interrupted wait returns as well.
    void wait();

private:
    sem_t sem_;
};
