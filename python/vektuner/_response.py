"""One answer of the device."""


class Response:
    """An answer: `status` ("OK" or "NG"), `ok`, `self_number` (the device's response
    number), the fields by name as the message defines them (`response.masterGain`,
    `response["masterGain"]`, or all of them in `fields`; a list for an array or list
    field), and `raw`, the raw data as bytes (None when it went to a file; its length is
    `raw_length` either way)."""

    __slots__ = ("feature", "message", "status", "self_number", "fields", "raw", "raw_length")

    def __init__(self, feature, message, status, self_number, fields, raw, raw_length):
        self.feature = feature
        self.message = message
        self.status = status
        self.self_number = self_number
        self.fields = fields
        self.raw = raw
        self.raw_length = raw_length

    @property
    def ok(self):
        return self.status == "OK"

    def __getattr__(self, name):
        fields = object.__getattribute__(self, "fields")
        if name in fields:
            return fields[name]
        raise AttributeError(f"{self.feature} {self.message} has no field {name!r} "
                             f"(fields: {', '.join(fields) or 'none'})")

    def __getitem__(self, name):
        return self.fields[name]

    def __repr__(self):
        fields = " ".join(f"{k}={v!r}" for k, v in self.fields.items())
        raw = f" raw={self.raw_length} bytes" if self.raw_length else ""
        return f"<Response {self.feature} {self.message} {self.status}{' ' if fields else ''}" \
               f"{fields}{raw}>"
