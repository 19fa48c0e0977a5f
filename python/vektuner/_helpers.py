"""The typed helpers (`link.gain.master`, `link.eqv2.set_band(...)`), generated from the
master library's settings table and message catalogue when the package is imported.

Each setting of the table gives a getter and a setter in the document's terms:
  one value           property `name` (assignable) and `set_name(value)`
  one per channel,    property `name`, a dict by channel name, and `set_name(values)`:
  all in one message  a mapping (channels left out keep the device's values) or six values
  one per channel     `name(channel)` and `set_name(channel, item=None, /, **fields)`
  per channel & band  `name(channel, band)` and `set_name(channel, band, item=None, /,
                      **fields)`; fields left out keep the device's values
Every other message is a method named after it (`set_sine_pattern(channel, frequency)`)
that takes its fields in wire order and returns the answer's one field, the raw data
(bytes), nothing, or the Response when it has several fields.

Getters and setters raise NG when the device answers NG; request() does not.
The stub (__init__.pyi) is written from HELPERS by make_stub.py."""

import inspect
import re
from collections.abc import Mapping
from typing import Any, NamedTuple, TypedDict

from . import _vektuner
from ._errors import NG

CHANNELS = tuple(_vektuner.channels)

_PYTHON_TYPES = {"int": "int", "uint": "int", "float": "float", "bool": "bool",
                 "string": "str"}
_RUNTIME_TYPES = {"int": int, "uint": int, "float": float, "bool": bool, "string": str}
# What the catalogue cannot say: the one message whose answer carries raw data, and
# the version text this package announces when it asks for the device's.
_RAW_DATA = {("Common", "FileContent")}
_DEFAULTS = {("Common", "Version", "version"): "vektuner"}
_EMPTY = inspect.Parameter.empty


def snake(name):
    """fadeBalance -> fade_balance, GetBandConfig -> get_band_config"""
    return re.sub(r"(?<=[a-z0-9])([A-Z])", r"_\1", name).lower()


class Param(NamedTuple):
    name: str
    annotation: str
    default: Any = _EMPTY
    kind: Any = inspect.Parameter.POSITIONAL_OR_KEYWORD


class Helper(NamedTuple):
    """One generated member of a feature class: a property (getter, and setter when
    `settable`) or a method."""
    name: str
    is_property: bool
    params: tuple
    returns: str
    doc: str
    function: Any
    settable: bool = False
    accepts: str = ""  # what a settable property takes


def _field_type(slot, sequence="list"):
    base = _PYTHON_TYPES[slot["base"]]
    return base if slot["count"] == 1 else f"{sequence}[{base}]"


def _value_type(setting, structures):
    """The type of one value: of one channel's for a setting all channels share a
    message for."""
    fields = setting["value"]
    if len(fields) > 1:
        return structures[(setting["feature"], setting["name"])]
    if setting["range"] == "channel_array":
        return _PYTHON_TYPES[fields[0]["base"]]
    return _field_type(fields[0])


def _synopsis(slots):
    return " ".join(f"{s['name']}:{s['type']}" for s in slots)


def _signature(params, returns):
    return inspect.Signature(
        [inspect.Parameter("self", inspect.Parameter.POSITIONAL_ONLY)] +
        [inspect.Parameter(p.name, p.kind, default=p.default, annotation=p.annotation)
         for p in params], return_annotation=returns)


def _method(name, params, returns, doc, body):
    """A method with a real signature: body(link, bound arguments by name)."""
    signature = _signature(params, returns)

    def method(self, *args, **kwargs):
        try:
            bound = signature.bind(self, *args, **kwargs)
        except TypeError as e:
            raise TypeError(f"{type(self).__name__}.{name}(): {e}") from None
        bound.apply_defaults()
        arguments = dict(bound.arguments)
        del arguments["self"]
        return body(self._link, arguments)

    method.__name__ = name
    method.__signature__ = signature
    method.__doc__ = doc
    return method


def _setting_helpers(setting, structures):
    feature, name = setting["feature"], setting["name"]
    label = f"{feature}.{name}"
    getter, setter = snake(name), "set_" + snake(name)
    value = _value_type(setting, structures)
    fields = setting["value"]
    several = len(fields) > 1
    messages = f"{feature} {setting['get']}" + (f" / {setting['set']}" if setting["set"] else "")
    last_set = (" The device answers with what was last set through the daemon since it "
                "started: the platform cannot report it.") if setting["last_set"] else ""
    helpers = []
    key_params = ()
    if setting["range"] in ("per_channel", "per_band"):
        key_params = (Param("channel", "str"),)
    if setting["range"] == "per_band":
        key_params += (Param("band", "int"),)

    def key(arguments):
        return arguments.get("channel", ""), arguments.get("band", -1)

    if setting["range"] in ("one", "channel_array"):
        shown = f"dict[str, {value}]" if setting["range"] == "channel_array" else value
        if setting["range"] == "channel_array":
            given = f"Mapping[str, {value}] | Sequence[{value}]"
        else:
            given = value if several else _field_type(fields[0], "Sequence")
        per_channel = (" by channel name (" + " ".join(CHANNELS) + ")"
                       if setting["range"] == "channel_array" else "")
        doc = f"{label}{per_channel} ({messages}: {_synopsis(fields)}).{last_set}"

        def read(self):
            return self._link._read(feature, name, "", -1)

        def write(self, values):
            self._link._write(feature, name, "", -1, values)

        read.__doc__ = doc
        helpers.append(Helper(getter, True, (), shown, doc,
                              property(read, write if setting["set"] else None, doc=doc),
                              settable=bool(setting["set"]), accepts=given))
        if setting["set"]:
            params = (Param("value", given),)
            partial = ""
            if setting["range"] == "channel_array":
                # The six values may also come one by one, in channel order.
                params = (Param("value", f"{given} | {value}"),
                          Param("values", value, kind=inspect.Parameter.VAR_POSITIONAL))
                partial = (" A mapping may leave channels out: they keep the device's values "
                           "(read first).")
            set_doc = f"Sets {label} ({feature} {setting['set']}).{partial}"

            def write_all(link, arguments):
                rest = arguments.get("values", ())
                link._write(feature, name, "", -1,
                            [arguments["value"], *rest] if rest else arguments["value"])

            helpers.append(Helper(setter, False, params, "None", set_doc,
                                  _method(setter, params, "None", set_doc, write_all)))
        return helpers

    keys = ", ".join(p.name for p in key_params)
    doc = f"{label} of one {keys} ({messages}: {_synopsis(fields)}).{last_set}"
    helpers.append(Helper(getter, False, key_params, value, doc,
                          _method(getter, key_params, value, doc,
                                  lambda link, a: link._read(feature, name, *key(a)))))
    if not setting["set"]:
        return helpers
    item_param = Param("item", f"{value} | None" if several else value,
                       None if several else _EMPTY, inspect.Parameter.POSITIONAL_ONLY)
    params = tuple(p._replace(kind=inspect.Parameter.POSITIONAL_ONLY) for p in key_params)
    params += (item_param,)
    if several:
        params += tuple(Param(f["name"], _field_type(f, "Sequence") + " | None", None,
                              inspect.Parameter.KEYWORD_ONLY) for f in fields)
    set_doc = (f"Sets {label} of one {keys} ({feature} {setting['set']}): the whole value as "
               f"item, or some of its fields ({', '.join(f['name'] for f in fields)}) by "
               "name; the others keep the device's values (read first)." if several else
               f"Sets {label} of one {keys} ({feature} {setting['set']}).")

    def write(link, arguments):
        item = arguments.get("item")
        if several:
            named = {f["name"]: arguments[f["name"]] for f in fields
                     if arguments.get(f["name"]) is not None}
            if item is None and not named:
                raise ValueError(f"{label}: give the value as item or some of its fields by "
                                 f"name ({', '.join(f['name'] for f in fields)})")
            if named and item is not None and not isinstance(item, Mapping):
                raise ValueError(f"{label}: item is not a mapping of the fields")
            item = {**(item or {}), **named} if named else item
        link._write(feature, name, *key(arguments), item)

    helpers.append(Helper(setter, False, params, "None", set_doc,
                          _method(setter, params, "None", set_doc, write)))
    return helpers


def _message_helper(message, warning):
    feature, name = message["feature"], message["name"]
    raw = (feature, name) in _RAW_DATA
    params = tuple(Param(snake(f["name"]), _field_type(f, "Sequence") if f["count"] != 0
                         else "Sequence[str]", _DEFAULTS.get((feature, name, f["name"]), _EMPTY))
                   for f in message["fields"])
    if raw:
        params += (Param("output", "str | None", None, inspect.Parameter.KEYWORD_ONLY),)
    answer = message["answer"]
    if raw:
        returns = "bytes | int"
        shows = "the raw data as bytes, or with output the number of bytes written to that file"
    elif not answer:
        returns, shows = "None", "nothing"
    elif len(answer) == 1:
        returns = _field_type(answer[0]) if answer[0]["count"] != 0 else "list[str]"
        shows = answer[0]["name"]
    else:
        returns, shows = "Response", "the Response (" + _synopsis(answer) + ")"
    doc = (f"{feature} {name} ({_synopsis(message['fields']) or 'no fields'}); returns "
           f"{shows}. Raises NG when the device answers NG.{warning}")
    wire = [f["name"] for f in message["fields"]]

    def call(link, arguments):
        response = link.request(feature, name, *[arguments[snake(w)] for w in wire],
                                output=arguments.get("output"))
        if not response.ok:
            raise NG(response)
        if raw:
            return response.raw if response.raw is not None else response.raw_length
        if len(answer) == 1:
            return response.fields.get(answer[0]["name"])
        return response if answer else None

    method_name = snake(name)
    return Helper(method_name, False, params, returns, doc,
                  _method(method_name, params, returns, doc, call))


def _filter_helpers(feature):
    """import_filters and export_filters of an equaliser feature: filter text (the APO
    configuration form or a Filter Settings file) onto channels, and back out."""
    channel = Param("channel", "str")
    fit = Param("fit", "bool", False)
    preamp = Param("preamp", "str", "channel", inspect.Parameter.KEYWORD_ONLY)
    dry_run = Param("dry_run", "bool", False, inspect.Parameter.KEYWORD_ONLY)
    import_doc = (f"Filter text onto {feature} channel(s) (\"LF\" or \"LF,CF\"), fitted to "
                  "the device profile and applied as vek_master eq import: raises ValueError "
                  "listing every problem (nothing sent) unless fit clamps and drops; the "
                  "Preamp goes onto the channel's gain (preamp=\"master\" or \"ignore\"). "
                  "Returns {\"status\", \"channels\": [{\"changes\", \"gain\", "
                  "\"largest\", \"curves\"}], \"apply\"}.")
    export_doc = ("A channel's bands as filter text: format \"apo\" (the APO configuration "
                  "form) or \"rew\" (a Filter Settings file); eq import reads it back.")

    def do_import(link, a):
        return link._session.import_filters(a["text"], a["channel"], bool(a["fit"]),
                                            a["preamp"], bool(a["dry_run"]))

    def do_export(link, a):
        return link._session.export_filters(a["channel"], a["format"])

    import_params = (Param("text", "str"), channel, fit, preamp, dry_run)
    export_params = (channel, Param("format", "str", "apo"))
    return [Helper("import_filters", False, import_params, "dict[str, Any]", import_doc,
                   _method("import_filters", import_params, "dict[str, Any]", import_doc,
                           do_import)),
            Helper("export_filters", False, export_params, "str", export_doc,
                   _method("export_filters", export_params, "str", export_doc, do_export))]


class Feature:
    """The helpers of one feature on one link."""
    __slots__ = ("_link",)

    def __init__(self, link):
        self._link = link

    def __repr__(self):
        return f"<{type(self).__name__} helpers of {self._link!r}>"


def _build():
    settings = _vektuner.settings()
    messages = _vektuner.messages()
    structures = {}
    for s in settings:
        if len(s["value"]) > 1:
            structures[(s["feature"], s["name"])] = s["feature"] + s["name"][0].upper() + \
                s["name"][1:]
    helpers = {}
    covered = set()
    for s in settings:
        if s["disturbs"]:
            continue
        helpers.setdefault(s["feature"], []).extend(_setting_helpers(s, structures))
        covered |= {(s["feature"], s["get"]), (s["feature"], s["set"])}
    disturbing = {(s["feature"], s["get"]) for s in settings if s["disturbs"]}
    for m in messages:
        key = (m["feature"], m["name"])
        if key in covered:
            continue
        warning = (" Asking for it changes the device, so a snapshot does not ask."
                   if key in disturbing else "")
        helpers.setdefault(m["feature"], []).append(_message_helper(m, warning))
    for feature in ("Eq", "EqV2"):
        helpers.setdefault(feature, []).extend(_filter_helpers(feature))
    for feature, members in helpers.items():
        names = [h.name for h in members]
        duplicates = {n for n in names if names.count(n) > 1}
        if duplicates:
            raise RuntimeError(f"{feature}: helpers named twice: {sorted(duplicates)}")
    classes = {}
    for feature, members in helpers.items():
        namespace = {"__slots__": (), "__doc__": f"The {feature} feature's settings and "
                                                 f"messages (link.{feature.lower()})."}
        for h in members:
            namespace[h.name] = h.function
        classes[feature] = type(feature, (Feature,), namespace)
    # The values of several fields are dicts; typed ones for type checkers and editors.
    fields = {structures[(s["feature"], s["name"])]: {f["name"]: _field_type(f) for f in s["value"]}
              for s in settings if (s["feature"], s["name"]) in structures}
    typed = {structures[(s["feature"], s["name"])]: TypedDict(
        structures[(s["feature"], s["name"])],
        {f["name"]: _RUNTIME_TYPES[f["base"]] if f["count"] == 1 else list[_RUNTIME_TYPES[f["base"]]]
         for f in s["value"]}) for s in settings if (s["feature"], s["name"]) in structures}
    return helpers, classes, fields, typed


# Per feature its helpers; the classes made of them; the dict types of values of several
# fields, as field annotations and as TypedDict classes.
HELPERS, FEATURES, STRUCTURE_FIELDS, STRUCTURES = _build()
