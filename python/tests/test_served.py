"""Link(url=...): a device that `vek_master serve` owns, used from Python beside the
server's other clients."""

import os
import signal
import subprocess

import pytest

import vektuner


@pytest.fixture
def server(cabled_daemon):
    """vek_master serve on the cabled daemon's line; yields its URL."""
    serve = subprocess.Popen([os.environ["VEK_MASTER"], "serve", f"--device={cabled_daemon}",
                              "--listen=127.0.0.1:0", "--no-journal"],
                             stdout=subprocess.PIPE, text=True)
    try:
        url = serve.stdout.readline().strip().rsplit(" ", 1)[-1]
        assert url.startswith("http://127.0.0.1:")
        assert serve.stdout.readline() == "vek_master serve: device profile default (built-in)\n"
        # The line is served once its device has answered.
        assert serve.stdout.readline().startswith(f"{cabled_daemon}: connected")
        yield url
    finally:
        serve.send_signal(signal.SIGTERM)
        assert serve.wait(timeout=10) == 0


def test_a_served_device_answers_as_a_line_of_our_own(server, cabled_daemon):
    with vektuner.Link(url=server) as link:
        assert link.request("Gain", "SetMaster", -10).ok
        assert link.gain.master == -10.0
        link.eqv2.set_band("CF", 3, value3=-4.5)
        assert link.eqv2.band("CF", 3)["value3"] == -4.5
        with pytest.raises(ValueError, match=r"Gain SetChannel takes 6 arguments"):
            link.request("Gain", "SetChannel", 1, 2)

        document = link.snapshot()
        assert document["device"]["path"] == cabled_daemon
        assert document["settings"]["Gain"]["master"] == -10.0
        document["settings"]["Gain"]["master"] = -20.0
        result = link.apply(document)
        assert (result["status"], [c["setting"] for c in result["changes"]]) == \
            ("OK", ["Gain.master"])
        assert link.gain.master == -20.0
        assert vektuner.diff(document, link) == []
        # A list of messages is one batch to the server, answered in its order.
        many = link.request_many([("Gain", "SetMaster", -7), ("Gain", "GetMaster"),
                                  ("EqV2", "GetBandConfig", "CF", 3)])
        assert [(r.message, r.status, r.self_number) for r in many] == [
            ("SetMasterResponse", "OK", many[0].self_number),
            ("GetMasterResponse", "OK", many[0].self_number + 1),
            ("GetBandConfigResponse", "OK", many[0].self_number + 2)]
        assert (many[1].masterGain, many[2].value3) == (-7.0, -4.5)
        with pytest.raises(vektuner.Timeout, match="Reverb GetMode"):
            link.request_many([("Gain", "GetMaster"), ("Reverb", "GetMode")])
        # The line is the server's: there is no traffic of the link's own to count.
        assert tuple(link.traffic) == (0, 0, 0)


def test_what_the_server_refuses_raises_before_anything_is_sent(server):
    with pytest.raises(ValueError, match="url"):
        vektuner.Link(url="ftp://127.0.0.1:1")
    with pytest.raises(ValueError, match="^force does not go with url"):
        vektuner.Link(url=server, force=True)
    with vektuner.Link(url=server, device_index=3) as link:
        with pytest.raises(ValueError, match="device"):
            link.request("Gain", "GetMaster")


def test_a_file_comes_through_the_server_in_memory_and_to_a_file(server, tmp_path):
    data = os.urandom(267)
    source = tmp_path / "volume_property.xml"
    source.write_bytes(data)
    copy = tmp_path / "copy.xml"
    with vektuner.Link(url=server) as link:
        response = link.request("Common", "FileContent", str(source))
        assert (response.ok, response.raw_length, response.raw) == (True, 267, data)
        assert link.common.file_content(str(source)) == data
        assert link.common.file_content(str(source), output=str(copy)) == 267
        assert copy.read_bytes() == data
        # A file the device cannot read: OK with no bytes, as on a line of our own.
        response = link.request("Common", "FileContent", str(tmp_path / "absent"))
        assert (response.ok, response.raw_length, response.raw) == (True, 0, b"")
