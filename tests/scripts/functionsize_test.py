"""The measure of functions: what is one, how many lines it has and how complicated it is."""
import os
import subprocess
import sys
import tempfile
import unittest

SCRIPTS = sys.argv.pop(1)
sys.path.insert(0, SCRIPTS)
from functionsize import Source  # noqa: E402


def measured(text):
    return [(name, lines, complexity) for _, name, lines, complexity in Source(text).functions]


def complexity(body):
    return measured('void f()\n{\n' + body + '\n}\n')[0][2]


class Functions(unittest.TestCase):
    def test_findsEachForm(self):
        for text, name in [
                ('int f() { return 1; }', 'f'),
                ('namespace a {\nnamespace {\nint g()\n{\n}\n}\n}', 'g'),
                ('class A : public B {\nQ_OBJECT\nprivate Q_SLOTS:\nvoid h() const noexcept;\n'
                 'void i() const override {}\n};', 'i'),
                ('A::A(int x)\n: B{x}\n, m_y(x)\n{\n}', 'A::A'),
                ('A::~A() = default;\nA::~A()\n{\n}', 'A::~A'),
                ('template <class T, int N = 25>\nauto A<T>::get() const -> std::vector<int>\n{\n}',
                 'get'),
                ('extern "C" int c()\n{\n}', 'c'),
                ('bool operator==(const A& a, const A& b)\n{\n}', 'operator==')]:
            self.assertEqual([f[0].split('>::')[-1] for f in measured(text)], [name], text)

    def test_findsLambdasOfVariables(self):
        self.assertEqual(measured('const Row rows[] = {\n{"a", [](int x) {\nreturn x;\n}},\n};'),
                         [('lambda', 3, 0)])

    def test_takesNothingElseForOne(self):
        for text in ['struct A { int x{3}; };', 'enum class E { A, B };', 'const int x[] = {f(1)};',
                     'void f();', '// int f() {}\n/* int g() {} */', '#define F() { }',
                     'const char t[] = R"(int f() { })";', 'std::function<void()> g{nullptr};']:
            self.assertEqual(measured(text), [], text)

    def test_countsFromTheNameToTheBrace(self):
        self.assertEqual(measured('static int\nf(int a,\n  int b)\n{\n  // "}"\n  return 1;\n}'),
                         [('f', 6, 0)])


class Complexity(unittest.TestCase):
    def test_countsBranchesAndTheirNesting(self):
        for body, expected in [
                ('a();', 0),
                ('if (a) b();', 1),
                ('if (a) b(); else c();', 2),
                ('if (a) b(); else if (c) d(); else e();', 3),
                ('for (;;) if (a) b();', 3),
                ('while (a) { do { b(); } while (c); }', 3),
                ('switch (a) { case 1: if (b) c(); break; default: d(); }', 3),
                ('try { a(); } catch (...) { if (b) c(); }', 3),
                ('return a ? b : c ? d : e;', 3),
                ('goto end;', 1),
                ('if constexpr (a) b();', 1)]:
            self.assertEqual(complexity(body), expected, body)

    def test_countsRunsOfOperators(self):
        for body, expected in [
                ('return a && b && c;', 1),
                ('return a && b || c;', 2),
                ('return a && (b || c) && d;', 2),
                ('return a >= b && c <= d && e != f;', 1),
                ('auto&& a = b; T(T&& c);', 0)]:
            self.assertEqual(complexity(body), expected, body)

    def test_countsLambdasOneLevelDeeper(self):
        self.assertEqual(complexity('g([&](int x) { if (x) h(); });'), 2)
        self.assertEqual(complexity('a[1] = b[2]; if (a) { c[3](); }'), 1)


class Verdict(unittest.TestCase):
    def run_on(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, 'x.cpp')
            with open(path, 'w', encoding='utf-8') as file:
                file.write(text)
            run = subprocess.run([sys.executable, os.path.join(SCRIPTS, 'functionsize.py'), path],
                                 capture_output=True, text=True, check=False)
            return run.returncode, run.stdout.replace(path, 'x.cpp')

    def test_refusesWhatIsBeyondALimit(self):
        self.assertEqual(self.run_on('int f()\n{\n' + 'a();\n' * 37 + '}\n'), (0, ''))
        self.assertEqual(self.run_on('int f()\n{\n' + 'a();\n' * 38 + '}\n'),
                         (1, 'x.cpp:1: f: 41 lines (at most 40)\n'))
        self.assertEqual(self.run_on('int f()\n{\n' + 'if (a) b();\n' * 25 + '}\n'), (0, ''))
        self.assertEqual(self.run_on('int f()\n{\n' + 'if (a) b();\n' * 26 + '}\n'),
                         (1, 'x.cpp:1: f: cognitive complexity 26 (at most 25)\n'))


if __name__ == '__main__':
    unittest.main()
