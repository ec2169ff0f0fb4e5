"""Capture configurations and display descriptions, and the column labels they give.

A capture configuration names, per manipulator, the quantity types recorded at the manipulator,
at each link and at each end effector, with their column labels and disable flags. It is the
`generalCapture` element of a capture file and of a recording's XML file, and each axis of a
display description holds one.
"""
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field

NAMESPACE = "http://www.hxtoolkit.org/namespace/sm#"
_NS = "{" + NAMESPACE + "}"

_PLACEMENT = ["Translation X", "Translation Y", "Translation Z",
              "Quaternion 0", "Quaternion 1", "Quaternion 2", "Quaternion 3"]
_MOTION = ["Linear X", "Linear Y", "Linear Z", "Angular X", "Angular Y", "Angular Z"]
_FORCE = ["Force X", "Force Y", "Force Z", "Moment X", "Moment Y", "Moment Z"]
_REACH = ["Target Reached", "Translation Error", "Orientation Error", "Desired X", "Desired Y", "Desired Z",
          "Desired Quaternion 0", "Desired Quaternion 1", "Desired Quaternion 2", "Desired Quaternion 3",
          "Actual X", "Actual Y", "Actual Z", "Actual Quaternion 0", "Actual Quaternion 1", "Actual Quaternion 2",
          "Actual Quaternion 3", "Hit Joint Limit", "Hit Singularity", "Collision Occurred"]

# Every quantity type by its element name: its description and its columns' default labels.
QUANTITIES = {
    "baseAccelerationDataCaptureType": ("Base Accelerations", _MOTION),
    "basePositionDataCaptureType": ("Base Positions", _PLACEMENT),
    "baseVelocityDataCaptureType": ("Base Velocities", _MOTION),
    "centerOfMassDataCaptureType": ("Center of Mass", ["X", "Y", "Z"]),
    "manipulatorPowerDataCaptureType": ("Manipulator Power", ["Manipulator Power"]),
    "controlInputDataCaptureType": ("Control Input", ["Control Input"]),
    "controlOutputActualJointVelocityDataCaptureType": ("Control Output Actual Joint Velocities", ["Joint Velocity"]),
    "controlOutputJointPositionDataCaptureType": ("Control Output Joint Positions", ["Joint Position"]),
    "controlOutputJointVelocityDataCaptureType": ("Control Output Joint Velocities", ["Joint Velocity"]),
    "controlTorqueDataCaptureType": ("Control Torques", ["Control Torque"]),
    "externalForceDataCaptureType": ("External Forces", _FORCE),
    "jointAccelerationDataCaptureType": ("Joint Accelerations", ["Joint Acceleration"]),
    "jointPositionDataCaptureType": ("Joint Positions", ["Joint Position"]),
    "jointTorqueDataCaptureType": ("Joint Torques", ["Joint Torque"]),
    "jointVelocityDataCaptureType": ("Joint Velocities", ["Joint Velocity"]),
    "motorPowerDataCaptureType": ("Motor Power", ["Motor Power"]),
    "structuralForceDataCaptureType": ("Structural Forces", _FORCE),
    "endEffectorAccelerationDataCaptureType": ("End Effector Accelerations", _MOTION),
    "endEffectorPlacementDataCaptureType": ("End Effector Placements", _PLACEMENT),
    "endEffectorVelocityDataCaptureType": ("End Effector Velocities", _MOTION),
    "reachTargetDataCaptureType": ("Reach Target", _REACH),
}


def _local(tag):
    return tag.rsplit("}", 1)[-1]


def _child(element, name):
    return element.find(_NS + name)


def _text(element, name, default=""):
    found = _child(element, name)
    return found.text.strip() if found is not None and found.text else default


def _elements(element, vector):
    """The <element> entries of the vector child `vector` (none when it is absent)."""
    found = _child(element, vector)
    return [] if found is None else found.findall("element")


def group_scalars(element):
    """The scalars of an element's <group> children: blank-separated, strings in quotes with \\" and \\\\."""
    scalars = []
    for group in element.iter("group"):
        text = group.text or ""
        i, size = 0, len(text)
        while i < size:
            if text[i].isspace():
                i += 1
            elif text[i] == '"':
                i += 1
                chars = []
                while i < size and text[i] != '"':
                    if text[i] == "\\" and i + 1 < size and text[i + 1] in '"\\':
                        i += 1
                    chars.append(text[i])
                    i += 1
                scalars.append("".join(chars))
                i += 1
            else:
                start = i
                while i < size and not text[i].isspace():
                    i += 1
                scalars.append(text[start:i])
    return scalars


@dataclass
class CapturedType:
    """One quantity type as a capture configuration records it at one place."""
    name: str            # element name, "jointPositionDataCaptureType"
    prefix: str          # "Manip[0]:", "Manip[0]:left_link1:" or "Manip[0]:EE[0]:"
    description: str     # "Joint Positions"
    labels: list         # column labels, one per column of the type (missing ones empty)
    disabled: list       # one flag per column

    def columns(self):
        """Labels of the columns a recording holds for this type (disabled ones left out)."""
        if len(self.labels) <= 1:
            return [] if self.disabled and self.disabled[0] else [self.prefix + self.description]
        return [f"{self.prefix}{self.description}:{label}"
                for label, off in zip(self.labels, self.disabled) if not off]


@dataclass
class Capture:
    """A capture configuration: its label and its types in the order a recording's columns take."""
    label: str = ""
    types: list = field(default_factory=list)

    def columns(self):
        """Labels of the data columns the configuration records, after time and path-point index."""
        return [label for captured in self.types for label in captured.columns()]


def _captured_type(element, prefix):
    name = _local(element.tag)
    if name not in QUANTITIES:
        raise ValueError(f"unknown quantity type '{name}'")
    description, defaults = QUANTITIES[name]
    size = len(defaults)
    labels_element = _child(element, "dataLabels")
    labels = list(defaults) if labels_element is None else group_scalars(labels_element)
    labels = (labels + [""] * size)[:size]
    flags_element = _child(element, "disableFlags")
    flags = [] if flags_element is None else [flag in ("true", "1") for flag in group_scalars(flags_element)]
    flags = (flags + [False] * size)[:size]
    return CapturedType(name, prefix, description, labels, flags)


def parse_capture(element):
    """The Capture held by `element` (a generalCapture element or an axis of a display description)."""
    capture = Capture(_text(element, "systemDataCaptureLabel"))

    def add_types(entry, prefix):
        vector = _child(entry, "dataCaptureTypeVector")
        for type_element in ([] if vector is None else list(vector)):
            capture.types.append(_captured_type(type_element, prefix))

    for manipulator in _elements(element, "manipulatorDataCaptureVector"):
        prefix = f"Manip[{_text(manipulator, 'manipulatorIndex', '0')}]:"
        add_types(manipulator, prefix)
        for link in _elements(manipulator, "linkDataCaptureVector"):
            add_types(link, f"{prefix}{_text(link, 'linkIdentification')}:")
        for effector in _elements(manipulator, "endEffectorDataCaptureVector"):
            add_types(effector, f"{prefix}EE[{_text(effector, 'endEffectorIndex', '0')}]:")
    return capture


def _parse_file(path):
    try:
        return ElementTree.parse(path).getroot()
    except ElementTree.ParseError as error:
        raise ValueError(f"{path}: malformed XML: {error}") from None


def read_capture(path):
    """The Capture of a capture configuration file (its root is a generalCapture element)."""
    return parse_capture(_parse_file(path))


@dataclass
class DisplayDescription:
    """A display description: a title, a capture per axis and the plot type."""
    title: str
    left: Capture
    right: Capture
    plot_type: str       # "scrollingCurve" or "barChart"


def read_display(path):
    """Reads a display description file (root element displaySystemDataCapture)."""
    root = _parse_file(path)
    if root.tag != _NS + "displaySystemDataCapture":
        raise ValueError(f"{path}: not a display description (root element <{_local(root.tag)}>)")

    def axis(name):
        element = _child(root, name)
        return Capture() if element is None else parse_capture(element)

    plot_type = _text(root, "plotType", "scrollingCurve")
    if plot_type not in ("scrollingCurve", "barChart"):
        raise ValueError(f"{path}: unknown plot type '{plot_type}' (scrollingCurve or barChart)")
    return DisplayDescription(_text(root, "title"), axis("leftSystemDataCapture"), axis("rightSystemDataCapture"),
                              plot_type)
