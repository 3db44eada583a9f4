import unittest
from xml.etree import ElementTree

import picture
from tree import MadeTree

FLOORS = "8 tool/\n3 nelvo/logging/\n0 nelvo/logging/format\n0 nelvo/logging/label\n"
SPACE = "{http://www.w3.org/2000/svg}"


def drawn(lines):
    with MadeTree({"tests/checks/floors.txt": lines}) as root:
        return picture.draw(picture.homes(root))


class Picture(unittest.TestCase):
    def faults(self, changes):
        with MadeTree({"tests/checks/floors.txt": FLOORS, picture.PICTURE: drawn(FLOORS), **changes}) as root:
            return picture.check(root)

    def elements(self, kind):
        return list(ElementTree.fromstring(drawn(FLOORS)).iter(SPACE + kind))

    def test_a_picture_that_was_drawn_has_no_faults(self):
        self.assertEqual([], self.faults({}))

    def test_a_picture_of_other_floors_is_a_fault(self):
        for changes in ({picture.PICTURE: drawn(FLOORS.replace("8", "7"))},
                        {"tests/checks/floors.txt": FLOORS + "0 nelvo/logging/column\n"}):
            self.assertEqual(["docs/architecture/floors.svg is not what picture.py --draw gives"],
                             self.faults(changes))

    def test_a_picture_that_is_not_there_is_a_fault(self):
        with MadeTree({"tests/checks/floors.txt": FLOORS}) as root:
            self.assertEqual(["docs/architecture/floors.svg is not what picture.py --draw gives"],
                             picture.check(root))

    def test_a_floor_without_a_name_is_a_fault(self):
        self.assertIn("nelvo/roof/ lives on floor 9, which the picture lacks",
                      self.faults({"tests/checks/floors.txt": FLOORS + "9 nelvo/roof/\n"}))

    def test_shows_each_name_on_its_floor_from_the_top_down(self):
        shown = [text.text for text in self.elements("text")]
        names = [text for text in shown if text in ("8", "tool", "3", "logging", "0", "logging/format")]
        self.assertEqual(["8", "tool", "3", "logging", "0", "logging/format"], names)

    def test_guests_look_different_from_folders(self):
        self.assertEqual([None, None, "guest", "guest", None, "guest"],
                         [box.get("class") for box in self.elements("rect") if box.get("class") != "page"])

    def test_a_row_that_is_full_is_followed_by_another(self):
        guests = "".join(f"0 nelvo/logging/a_guest_with_a_long_name_{i}\n" for i in range(9))
        boxes = [box for box in ElementTree.fromstring(drawn(FLOORS + guests)).iter(SPACE + "rect")]
        self.assertLess(1, len({box.get("y") for box in boxes if box.get("class") == "guest"}))
        self.assertTrue(all(float(box.get("x", 0)) + float(box.get("width")) <= 960 for box in boxes))


if __name__ == "__main__":
    unittest.main()
