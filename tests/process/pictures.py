"""Pictures as the host draws them, read with the distribution's XML parser; and a document that has
everything a picture can show."""

import re
import xml.etree.ElementTree

from host import op

SVG = "{http://www.w3.org/2000/svg}"

RTL = "مفتاح التشغيل"
CJK = "画像の切り替え"
EMOJI = "👩‍👩‍👧‍👦" * 40
LONG = "Ein sehr langer Name " * 500
CONTROL = "bell\x07 and\nline <b>&amp;\"quoted\"</b> ]]>"
SCRIPT = "</script><script>document.title='broken'</script><!--"


def placed(name, patch, x, y, to="doc", text=None):
    return [op("newNode", as_=name, patch=patch), op("addNode", node=name, to=to),
            op("setPosition", node=name, value=[x, y])] + (
                [op("setName", node=name, value=text)] if text else [])


def value(port, kind, content):
    return op("setStaticValue", port=port, value={"kind": kind, "value": content})


def everything(file):
    """node_0 is the document; the nodes get their numbers in the order in which they stand here."""
    return [
        op("newDocument", as_="doc"),
        *placed("touch", "HXRTouchInteractionNode", 0, 0),
        *placed("switch", "HXRSwitchNode", 220, 60, text=RTL),
        *placed("spring", "HXRSpring1DNode", 480, 0, text=CJK),
        *placed("color", "HXRColorMixerNode", 480, 160, text=CONTROL),
        *placed("view", "HXRColorViewNode", 1000, 0, text=SCRIPT),
        *placed("text", "HXRTextImageNode", 0, 200, text=LONG),
        *placed("family", "HXRClampNode", 300, 300, text=EMOJI),
        *placed("nothing", None, 560, 420),
        *placed("group", None, 740, 0, text="Group of three"),
        op("setForceAllowsSubnodes", node="group", value=True),
        *placed("inner", "HXRClampNode", 0, 0, to="group", text="Inner"),
        *placed("second", "HXRTransitionNode", 260, 40, to="group"),
        *placed("deep", None, 600, 0, to="group", text="Deep"),
        op("setForceAllowsSubnodes", node="deep", value=True),
        *placed("empty", None, 740, 300, text="Empty"),
        op("setForceAllowsSubnodes", node="empty", value=True),
        op("wire", from_="touch/Tarn.downOutput", to="switch/Tarn.toggleInput"),
        op("wire", from_="switch/Tarn.valueOutput", to="spring/Tarn.restPosition0Input"),
        op("wire", from_="touch/Tarn.interactionOutput", to="view/Tarn.interactionInput"),
        op("publish", port="inner/Tarn.valueInput", as_="published"),
        op("renamePort", symbolicPort="published", name="Controls: Amount"),
        op("publish", port="inner/Tarn.minimumInput", as_="lower"),
        op("publish", port="second/Tarn.output", as_="result"),
        op("wire", from_="inner/Tarn.resultOutput", to="second/Tarn.input"),
        op("wire", from_="spring/Tarn.position0Output", to="published"),
        op("wire", from_="result", to="view/Tarn.opacityInput"),
        op("wire", from_="family/Tarn.resultOutput", to="family/Tarn.valueInput"),  # a circle of one
        value("view/Tarn.colorInput", "color", [1, 0.5, 0, 0.5]),
        value("view/Tarn.widthInput", "number", 375),
        value("view/Tarn.xRotationInput", "degrees", 45),
        value("family/Tarn.minimumInput", "number", "nan"),
        value("family/Tarn.maximumInput", "number", "inf"),
        value("switch/Tarn.turnOnInput", "boolean", True),
        value("second/Tarn.outputMinInput", "string", SCRIPT),
        value("inner/Tarn.minimumInput", "string", LONG),
        op("wire", from_="switch/Tarn.valueOutput", to="color/Tarn.colorAInput"),
        op("setPortGroup", node="spring", orientation=1, group="Rest Position",
           collapsedCanvasGroup=True),
        op("setPortGroup", node="view", orientation=1, group="Masking", hidden=True),
        op("wire", from_="switch/Tarn.valueOutput", to="view/Tarn.maskedToBoundsInput"),
        op("save", file=str(file), codingType=3),
    ]


class Picture:
    """One SVG: what of each kind it shows, by key."""

    def __init__(self, text):
        self.root = xml.etree.ElementTree.fromstring(text)
        self.text = text if isinstance(text, str) else text.decode()

    def each(self, kind, under=None):
        return [e for e in (self.root if under is None else under).iter()
                if kind in e.get("class", "").split()]

    def nodes(self):
        return {e.get("data-node"): e for e in self.each("tk-node")}

    def ports(self, node):
        return [(e.get("data-orientation"), e.get("data-port")) for e in self.each("tk-port", node)]

    def wires(self):
        return [(e.get("data-from"), e.get("data-to")) for e in self.each("tk-wire")]

    def notes(self):
        return ["".join(e.itertext()) for e in self.each("tk-note")]

    def box(self, node):
        x, y = map(float, re.findall(r"-?[\d.]+", node.get("transform")))
        body = self.each("tk-body", node)[0]
        return x, y, float(body.get("width")), float(body.get("height"))

    def shown(self, element):
        """The text that is to be seen, without the tooltip."""
        return (element.text or "") + "".join(child.tail or "" for child in element)

    def names(self, node):
        return [self.shown(e) for e in self.each("tk-name", node)]

    def numbers(self):
        """Every number of every attribute that says where something stands."""
        for element in self.root.iter():
            for name in ("d", "x", "y", "cx", "cy", "r", "width", "height", "viewBox", "transform"):
                text = element.get(name)
                if text is not None:
                    yield from re.findall(r"[^\s,MLChlvaz()]+", text.replace("translate", " "))
