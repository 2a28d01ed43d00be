"""Checks what the library writes against the schema that wzrrecords prints.

Usage: validaterecords.py WZRRECORDS RECORDSAMPLES

Every sample must be valid. So that a schema that allows everything does not pass, every sample is
then damaged in each of its keys and must be invalid.
"""

import copy
import json
import subprocess
import sys

from jsonschema import Draft202012Validator


def output_of(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout.decode("utf-8")


def damaged(sample, properties, required):
    """The sample with one key missing or holding what no kind of value allows."""
    for key in sample:
        if key in required:
            missing = copy.deepcopy(sample)
            del missing[key]
            yield key + " missing", missing
        for wrong in (2.5, ["nested", ["list"]], {"a": {"b": 1}}):
            other = copy.deepcopy(sample)
            other[key] = wrong
            yield "%s: %r" % (key, wrong), other
    extra = set(sample) - set(properties)
    assert not extra, "keys without a definition: %s" % extra


def main():
    tool, samples = sys.argv[1:]
    schema = json.loads(output_of(tool))
    Draft202012Validator.check_schema(schema)
    seen = set()
    failures = []
    refused = 0
    for line in output_of(samples).splitlines():
        name, text = line.split("\t")
        sample = json.loads(text)
        definition = schema["$defs"][name]
        validator = Draft202012Validator({"$ref": "#/$defs/" + name, "$defs": schema["$defs"]})
        seen.add(name)
        for error in validator.iter_errors(sample):
            failures.append("%s: %s" % (name, error.message))
        if set(sample) != set(definition["properties"]):
            failures.append("%s: other keys than defined" % name)
        for what, wrong in damaged(sample, definition["properties"], definition["required"]):
            if validator.is_valid(wrong):
                failures.append("%s: valid although %s" % (name, what))
            refused += 1
    for name in set(schema["$defs"]) - seen:
        failures.append("%s: no sample" % name)
    for name in sorted(seen):
        Draft202012Validator.check_schema(json.loads(output_of(tool, name)))
    print("%d records, %d damaged samples refused" % (len(seen), refused))
    print("\n".join(failures))
    return 1 if failures or not seen else 0


sys.exit(main())
