#include "AudioThread.h"

#include <pthread.h>

#include <system_error>

AudioThread::AudioThread(const char* name, int priority)
    : name_(name != nullptr ? name : ""), priority_(priority) {}

// Joining here only keeps a forgotten thread from terminating the process through
// std::thread's destructor; the owner must still join before its own destructor
// runs, since run() belongs to the derived part.
AudioThread::~AudioThread() {
    prepareStop();
    join();
}

int AudioThread::start() {
    if (thread_.joinable()) {
        return -1;
    }
    // The priority is the platform's business: on a PC the stand-in runs the thread
    // at the default priority.
    (void)priority_;
    // Set before the thread exists so that the body's first poll already sees it.
    running_.store(true);
    try {
        thread_ = std::thread([this] {
            // Linux limits thread names to 15 characters.
            const std::string shortName = name_.substr(0, 15);
            pthread_setname_np(pthread_self(), shortName.c_str());
            run();
        });
    } catch (const std::system_error&) {
        running_.store(false);
        return -1;
    }
    return 0;
}

void AudioThread::prepareStop() {
    running_.store(false);
}

// The platform's stop may wait for more; all that join needs is the cleared flag.
void AudioThread::stop() {
    prepareStop();
}

void AudioThread::join() {
    if (thread_.joinable() && thread_.get_id() != std::this_thread::get_id()) {
        thread_.join();
    }
}
