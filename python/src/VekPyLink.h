#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "VekDeviceAccess.h"
#include "VekDeviceConnection.h"
#include "VekDeviceReading.h"
#include "VekHttpClient.h"
#include "VekRemoteAccess.h"
#include "VekMasterSession.h"
#include "VekMessageCatalog.h"
#include "VekSettingAccess.h"
#include "VekSettingsTable.h"
#include "VekValueJson.h"

namespace vekpython {

// One device for Python: the master library's session on a serial line or on a launched
// daemon's pseudo-terminal, or a device that `vek_master serve` owns, reached through its
// API; the settings table over either. Every wait happens with the GIL released; the
// device is used by one thread at a time.
//
// Answers come back as reply tuples (feature, message, status, self, fields, raw,
// rawDataLength) for vektuner.Response. An answer that did not come raises
// vektuner.Timeout, a failed line vektuner.LineError, arguments that do not fit
// ValueError (before anything is sent).
class VekPyLink {
public:
    using Json = vekmaster::VekValueJson::Json;

    VekPyLink() = default;
    VekPyLink(const VekPyLink&) = delete;
    VekPyLink& operator=(const VekPyLink&) = delete;

    void open(const std::string& device, int baudRate, int timeoutMs);
    // Starts the daemon on a pseudo-terminal and waits for its greeting; the daemon's
    // log file.
    std::string launch(const std::string& path, const std::vector<std::string>& args,
                       const std::string& log, const std::vector<std::string>& environment,
                       int timeoutMs);
    // Device number index of the server at url; token "" for none. The server's own
    // timeout bounds each answer.
    void connect(const std::string& url, int index, const std::string& token);
    // On: values outside the device profile's ranges are sent, each with a UserWarning
    // naming the breach. Not through a server, which checks against its own profile.
    void force(bool on);
    // Stops a launched daemon (SIGUSR1) and closes the line: (exited with 0, how it ended).
    pybind11::tuple close();

    // Any message; its raw data into the reply, or streamed to the file output.
    pybind11::tuple request(const std::string& feature, const std::string& name,
                            const pybind11::list& args, const std::string& output);
    // Several messages, each [feature, message, argument...], on the line's window at
    // once (through a server, one after another): their reply tuples, in order. Raises
    // for the first that went unanswered, once all are done.
    pybind11::list requestMany(const pybind11::list& requests);
    // Requests of a batch, a snapshot or an apply on the line at once (1 to 64).
    void setWindow(int window);
    // One value of a setting of the table: (reply, value); the value is None unless OK.
    // channel and band name the value for settings per channel and band ("" and -1 else).
    pybind11::tuple read(const std::string& feature, const std::string& name,
                         const std::string& channel, int band);
    // Sets one value: a value of several fields, or of all channels, may be partial; the
    // rest is read from the device first. The reply of the request that decided.
    pybind11::tuple write(const std::string& feature, const std::string& name,
                          const std::string& channel, int band, pybind11::handle value);
    // The settings of the served features (only None), or those a document's settings hold.
    pybind11::object readSettings(pybind11::handle only);
    pybind11::object snapshot();
    pybind11::object apply(pybind11::handle document, bool dryRun, bool bypass);
    // Filter text onto channels ("LF,CF"), fitted and applied as vek_master eq import:
    // its outcome as a dict; ValueError with every problem when it does not fit.
    pybind11::object importFilters(const std::string& text, const std::string& channels,
                                   bool fit, const std::string& preamp, bool dryRun);
    // A channel's bands as filter text, "apo" or "rew".
    std::string exportFilters(const std::string& channel, const std::string& format);

    // (requests, bytes sent, bytes received); zeros through a server, which owns the line.
    pybind11::tuple traffic();
    const std::string& device() const { return device_; }

private:
    // The message and its wire ARGs; ValueError when they do not fit.
    const vekmaster::VekMasterMessage& prepare(const std::string& feature, const std::string& name,
                                               const pybind11::list& args,
                                               vekprotocol::VekFields& wire);
    // Throws when the link is closed.
    vekmaster::VekDeviceAccess& access();
    // The line options for this link: its window with the given speed and timeout.
    vekmaster::VekDeviceConnection::Options lineOptions(int baudRate, int timeoutMs) const;
    // The setting's value that a read or write names (one channel, one band); ValueError
    // when there is none.
    vekmaster::VekSettingAccess::Target target(const std::string& feature, const std::string& name,
                                               const std::string& channel, int band);
    // Runs work(settings) as withAccess does; a forced link warns of each value outside
    // the profile's ranges that went out. Raises work's error.
    template <class Work>
    void onSetting(Work&& work);
    // The ranges values are checked against here: the profile in use, unless forced or
    // a server checks them with its own.
    std::shared_ptr<const vekmaster::VekDeviceProfile> limits() const;
    // Runs work(access) with the GIL released and the device held; throws when the
    // link is closed.
    template <class Work>
    void withAccess(Work&& work);
    // Sends with the GIL released and the session held; the answer is copied out.
    vekmaster::VekMasterReply send(const vekmaster::VekMasterMessage& message,
                                   const vekprotocol::VekFields& args,
                                   vekmaster::VekRawSink* raw = nullptr);
    // Reads the device's settings; throws when it stops answering.
    vekmaster::VekDeviceReading readDevice(const Json* only);

    std::mutex mutex_;
    vekmaster::VekDeviceConnection connection_;  // a line of our own
    std::unique_ptr<vekhttp::VekHttpClient> client_;  // or a served device
    std::unique_ptr<vekhttp::VekRemoteAccess> remote_;
    vekmaster::VekDeviceAccess* access_ = nullptr;  // one of the two, while open
    const vekmaster::VekMessageCatalog& catalog_ = vekmaster::VekMessageCatalog::shared();
    bool forced_ = false;
    int window_ = vekmaster::VekMasterSession::kDefaultWindow;
    const vekmaster::VekSettingsTable& table_ = vekmaster::VekSettingsTable::shared();
    std::string device_;
};

}  // namespace vekpython
