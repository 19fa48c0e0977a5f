#pragma once

namespace vekserve {

// A client's connection, as the server holds it to end it when it stops.
class VekConnection {
public:
    virtual ~VekConnection() = default;
    // Close once the answer under way (if any) is out. On the server's thread.
    virtual void shutdown() = 0;
};

}  // namespace vekserve
