#!/usr/bin/env python3
"""Writes the seed corpus: every example frame of the protocol, each request of every
feature, and a few streams that mix them. Run from this folder; the output is kept in
the repository, so this only needs running again when a message is added."""
import os

# The protocol's example frames (header lines; a line feed follows each).
EXAMPLES = """
AS:7:0:Common:GetBypassRequest:0:OK:
AS:1:0:Common:VersionResponse:0:OK:<A00020001>:
AS:12:0:Common:GetBypassResponse:0:NG:<0>:
AS:1:0:Common:VersionRequest:0:OK:<M1.0>:
AS:2:0:Common:FeatureRequest:0:OK:
AS:2:0:Common:FeatureResponse:0:OK:<Common:EqV2:Gain:Hfe:Speaker:Vb>:
AS:3:0:Common:FileListRequest:0:OK:<Gain>:
AS:3:0:Common:FileListResponse:0:OK:<Gain:/media/flash/nvm/mixhub/volume_property.xml>:
AS:4:0:Common:FileContentRequest:0:OK:</media/flash/nvm/mixhub/volume_property.xml>:
AS:5:0:Common:GetBypassRequest:0:OK:
AS:5:0:Common:GetBypassResponse:0:OK:<0>:
AS:6:0:Common:SetBypassRequest:0:OK:<1>:
AS:6:0:Common:SetBypassResponse:0:OK:
AS:1:0:Gain:GetMasterRequest:0:OK:
AS:20:0:Gain:GetMasterResponse:0:OK:<-12.5>:
AS:2:0:Gain:SetMasterRequest:0:OK:<-10>:
AS:21:0:Gain:SetMasterResponse:0:OK:
AS:3:0:Gain:SetChannelRequest:0:OK:<0:0:-3:-3:1.5:0>:
AS:22:0:Gain:GetChannelResponse:0:OK:<0:0:-3:-3:1.5:0>:
AS:4:0:Gain:SetFadeBalanceRequest:0:OK:<2:-1:15>:
AS:23:0:Gain:GetFadeBalanceResponse:0:OK:<0:0:15>:
AS:24:0:Gain:GetChannelResponse:0:NG:<0:0:0:0:0:0>:
AS:1:0:Reverb:GetEnableRequest:0:OK:
AS:30:0:Reverb:GetEnableResponse:0:OK:<1>:
AS:2:0:Reverb:SetModeRequest:0:OK:<3>:
AS:31:0:Reverb:SetModeResponse:0:OK:
AS:3:0:Reverb:GetModeRequest:0:OK:
AS:32:0:Reverb:GetModeResponse:0:OK:<3>:
AS:4:0:Eq:GetBandCountResponse:0:OK:<20:20:20:20:20:20>:
AS:1:0:EqV2:GetBandCountResponse:0:OK:<10:10:5:5:3:0>:
AS:5:0:Hfe:SetEnableRequest:0:OK:<1>:
AS:6:0:Hfe:GetChannelConfigRequest:0:OK:<CF>:
AS:17:0:Hfe:GetChannelConfigResponse:0:OK:<CF:1:0:1:0.75>:
AS:18:0:Hfe:GetEnableResponse:0:NG:<0>:
AS:7:0:Hfe:SetChannelConfigRequest:0:OK:<LS:1:1:0:-3.5>:
AS:8:0:Vb:GetChannelConfigRequest:0:OK:<LF>:
AS:21:0:Vb:GetChannelConfigResponse:0:OK:<LF:1:2:0.5:1:100:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0>:
AS:22:0:Vb:GetChannelConfigResponse:0:NG:<:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0:0>:
AS:3:0:Speaker:SetEnableRequest:0:OK:<1:1:0:0:1:1>:
AS:42:0:Speaker:GetDelayResponse:0:OK:<0:0:1.5:1.5:0.25:0>:
AS:4:0:Speaker:SetSinePatternRequest:0:OK:<LF:1000>:
AS:43:0:Speaker:SetSinePatternResponse:0:OK:
AS:1:0:Speaker:SetEnableRequest:0:OK:<1:0:1:0:1:0>:
AS:9:0:Speaker:SetStylePatternRequest:0:OK:<CF:2>:
AS:9:0:Common:SetBypassRequest:0:OK:<1>:
""".split()

HERE = os.path.dirname(os.path.abspath(__file__))
# One request of every message: the list the soak test and the benchmarks send too.
SAMPLES = os.path.join(HERE, "..", "..", "tests", "support", "sample_requests.vek")


def sample_requests():
    out = []
    with open(SAMPLES) as f:
        for line in f:
            words = line.split("#", 1)[0].split()
            if not words:
                continue
            feature, message, fields = words[0], words[1], words[2:]
            fields = ["/media/flash/nvm/mixhub/volume_property.xml" if w == "FILE" else w
                      for w in fields]
            block = ":<%s>" % ":".join(fields) if fields else ""
            out.append("AS:1:0:%s:%sRequest:0:OK%s:" % (feature, message, block))
    return out


RAW = b"<?xml version='1.0'?>\n<volume master='-12.5'/>\n"


def frames():
    out = [(line.encode() + b"\n") for line in EXAMPLES + sample_requests()]
    # A frame that carries raw data.
    out.append(b"AS:5:0:Common:FileContentResponse:%d:OK:<the path>:\n" % len(RAW) + RAW)
    return out


def write(folder, name, data):
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as f:
        f.write(data)


def sized(reads):
    """ServerFuzz input whose reads are exactly these byte strings (mode 128)."""
    out = b"\x80"
    for r in reads:
        out += bytes([(len(r) - 1) & 0xff, (len(r) - 1) >> 8]) + r
    return out


def main():
    os.chdir(HERE)
    all_frames = frames()
    for i, frame in enumerate(all_frames):
        # ServerFuzz: a read-size byte, then the stream; the byte varies the cuts.
        write("ServerFuzz", "frame%02d" % i, bytes([i % 9]) + frame)
        # FieldsFuzz: header fields, payload fields and raw data on lines of their own.
        header, _, rest = frame.partition(b"\n")
        fields = header.split(b":", 7)
        payload = fields[7].rstrip(b":").strip(b"<>") if len(fields) > 7 else b""
        write("FieldsFuzz", "frame%02d" % i, b":".join(fields[1:7]) + b"\n" + payload + b"\n" + rest)
    # Streams: every frame back to back, read whole and byte by byte, with noise.
    stream = b"".join(all_frames)
    write("ServerFuzz", "stream-whole", b"\x00" + stream)
    write("ServerFuzz", "stream-bytes", b"\x08" + stream)
    write("ServerFuzz", "stream-noise", b"\x03" + b"\x00\xffA\nS:" + stream.replace(b"\nAS", b"\n#~AS"))
    # More than the hub's 40960-byte cache: noise that never holds the magic, and a
    # frame announcing more raw data than fits; a request follows each.
    request = b"AS:1:0:Gain:GetMasterRequest:0:OK:\n"
    write("ServerFuzz", "overflow-noise", b"\x00" + b"x" * 41000 + request)
    write("ServerFuzz", "overflow-frame",
          b"\x00AS:5:0:Common:FileContentResponse:41000:OK:<p>:\n" + b"y" * 41000 + request)
    # A frame of exactly 40960 bytes held up to 60 bytes short; a read that holds the
    # rest and a request does not fit and is dropped, the 60 bytes then complete it.
    # A second read that does not fit in a row gives the frame up.
    head = b"AS:9:0:Common:VersionRequest:40914:OK:<M1.0>:\n"
    full = head + b"v" * 40914
    reads = [full[i:i + 1024] for i in range(0, 40900, 1024)]
    reads[-1] = full[39936:40900]
    fade = b"AS:9:0:Gain:GetFadeBalanceRequest:0:OK:\n"
    write("ServerFuzz", "near-full-frame-completes", sized(reads + [full[40900:] + fade, full[40900:], fade]))
    write("ServerFuzz", "near-full-frame-given-up", sized(reads + [full[40900:] + fade, fade + fade]))
    write("ServerFuzz", "bad-header", b"\x00AS:1:0:Gain:GetMasterRequest\nAS:1:0:Gain:GetMasterRequest:99999999999:OK:\n")


if __name__ == "__main__":
    main()
