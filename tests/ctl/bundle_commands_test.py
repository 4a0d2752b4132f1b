
from tool import ToolTest

CLIENT = "com.quillmark.quillmarkclient"


class Bundles(ToolTest):
    def test_bundles_with_the_identifier_are_listed(self):
        first = self.make_bundle("apps/A.app", CLIENT)
        second = self.make_bundle("apps/Tools/B.APP", CLIENT)
        self.make_bundle("apps/C.app", CLIENT.upper())
        self.assertEqual(self.json("bundles", "find", "--identifier", CLIENT, self.home / "apps"), [first, second])

    def test_the_answer_is_no_when_there_is_none(self):
        self.assertEqual(self.json("bundles", "find", "--identifier", CLIENT, self.home, status=1), [])
        self.assertEqual(self.json("bundles", "find", "--identifier", CLIENT, self.home / "missing", status=1), [])

    def test_stale_copies_are_those_found_then_the_24_fixed_paths(self):
        found = self.make_bundle("Applications/Old/Client.app", CLIENT)
        stale = self.json("bundles", "stale")
        self.assertEqual(stale[0], found)
        self.assertEqual(stale[-24], "~/Applications/Quillmark.app")
        self.assertEqual(stale[-1], "/Applications/Quillmark Client-5.app")
