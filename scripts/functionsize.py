#!/usr/bin/env python3
"""Says which functions of C++ sources are too long or too complicated.

    scripts/functionsize.py [--all] FILE...

A function may have 40 lines, from the one with its name to its closing brace, and a cognitive
complexity of 25: one for each branch, loop, handler and ternary, one more for each level that it is
nested in, one for each "else" and for each run of equal logical operators. What stands in a lambda
is nested one level deeper and counts for the function around it. Macros count as calls.

Reads the text alone, formatted by clang-format, so that all sources take a second; it knows
functions by their form. Exit status: 1 when a function is beyond a limit. --all prints every
function with its figures.
"""
import re
import sys

MAX_LINES = 40
MAX_COMPLEXITY = 25

TOKEN = re.compile(
    r'//[^\n]*|/\*.*?\*/'
    r'|R"(?P<mark>[^\s()\\]*)\(.*?\)(?P=mark)"'
    r'|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\''
    r'|^[ \t]*\#(?:\\\n|[^\n])*'
    r'|[A-Za-z_]\w*|\d(?:[\w.]|\'\d)*|::|->|&&|\|\||[<>=!+*/%&|^-]=|\S', re.S | re.M)
WORD = re.compile(r'[A-Za-z_]\w*$')
OPEN = {'(': ')', '[': ']', '{': '}'}
# What may stand between a function's parameters and its body.
QUALIFIERS = {'const', 'noexcept', 'override', 'final', 'mutable', '&', '&&', 'volatile'}
SCOPES = {'namespace', 'class', 'struct', 'union', 'extern'}
ACCESS = {'public', 'protected', 'private', 'Q_SLOTS', 'Q_SIGNALS'}


class Token:
    def __init__(self, text, line, spaced):
        self.text = text
        self.line = line
        self.spaced = spaced  # a blank before it: a logical operator, not a reference


def tokens_of(text):
    tokens = []
    line = 1
    last = 0
    for match in TOKEN.finditer(text):
        line += text.count('\n', last, match.start())
        last = match.start()
        word = match.group()
        if word.startswith(('//', '/*')) or word.lstrip().startswith('#'):
            continue
        if word[0] == '"' or word.startswith('R"') or word[0] == "'":
            word = '""'
        tokens.append(Token(word, line, text[match.start() - 1:match.start()].isspace()))
    return tokens


class Source:
    """Finds the functions of a source and measures them."""

    def __init__(self, text):
        self.tokens = tokens_of(text)
        self.partner = self._partners()
        self.functions = []  # (line, name, lines, complexity)
        self._scope(0, len(self.tokens))

    def _partners(self):
        partner = {}
        stack = []
        for index, token in enumerate(self.tokens):
            if token.text in OPEN:
                stack.append(index)
            elif token.text in OPEN.values():
                while stack:  # a bracket without its partner, from a macro, is passed over
                    start = stack.pop()
                    if OPEN[self.tokens[start].text] == token.text:
                        partner[start] = index
                        partner[index] = start
                        break
        return partner

    def _text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ''

    def _skip(self, index):
        """The index behind the token or the bracketed group that starts there."""
        return self.partner.get(index, index) + 1 if self._text(index) in OPEN else index + 1

    # Scopes: namespaces and classes.

    def _scope(self, index, end, is_table=False):
        start = index  # of the declaration
        while index < end:
            text = self._text(index)
            if text == ';':
                start = index + 1
            elif text == ':' and self._text(index - 1) in ACCESS:
                start = index + 1
            elif text == '{':
                close = self.partner.get(index, end)
                start = self._behind_templates(start)
                parameters = None if is_table else self._parameters(start, index)
                words = {self._text(i) for i in range(start, index)}
                if parameters is not None:
                    self._function(parameters, index)
                    start = close + 1
                elif 'enum' not in words and '=' not in words and words & SCOPES:
                    self._scope(index + 1, close)
                    start = close + 1
                elif is_table or '=' in words:  # perhaps of lambdas
                    self._scope(index + 1, close, is_table=True)
                index = close
            elif text == '[' and self._is_lambda(index):  # in a variable's initialiser
                body = self._lambda_body(index)
                self._measure('lambda', self.tokens[index].line, body)
                index = self.partner.get(body, end)
            elif text == '(':
                index = self.partner.get(index, index)
            index += 1

    def _behind_templates(self, index):
        while self._text(index) == 'template':
            depth = 0
            while index < len(self.tokens):
                index += 1
                depth += {'<': 1, '>': -1}.get(self._text(index), 0)
                if depth == 0:
                    break
            index += 1
        return index

    def _parameters(self, start, brace):
        """The index of the parameter list when the brace opens a function's body."""
        groups = []
        colon = arrow = None
        index = start
        while index < brace:
            text = self._text(index)
            if text == '=' and self._text(index - 1) != 'operator':
                return None
            if text == ':' and groups:
                colon = colon or index
            elif text == '->' and groups:
                arrow = arrow or index
            elif text == '(' and self._text(index - 1) not in ('noexcept', 'decltype'):
                if colon is None:
                    groups.append(index)
            index = self._skip(index)
        if not groups:
            return None
        if colon is not None:  # of initialisers, where "{" behind a name is one of them
            return groups[-1] if self._text(brace - 1) in (')', '}') else None
        rest = range(self.partner.get(groups[-1], brace) + 1, arrow or brace)
        plain = all(self._text(i) in QUALIFIERS or self._text(i) in '()' or
                    self._text(i - 1) == '(' for i in rest)
        return groups[-1] if plain else None

    def _function(self, parameters, body):
        name = parameters - 1
        parts = [self._text(name)]
        while self._text(name - 1) in ('::', '~', 'operator') or parts[0] == '::' and WORD.match(
                self._text(name - 1)):
            name -= 1
            parts.insert(0, self._text(name))
        self._measure(''.join(parts).lstrip(':'), self.tokens[name].line, body)

    def _measure(self, name, line, body):
        self.complexity = 0
        self._block(body, 0)
        end = min(self.partner.get(body, len(self.tokens)), len(self.tokens) - 1)
        self.functions.append((line, name, self.tokens[end].line - line + 1, self.complexity))

    # Statements. Each returns the index behind what it has read.

    def _block(self, index, nesting):
        close = self.partner.get(index, len(self.tokens))
        index += 1
        while index < close:
            index = self._statement(index, nesting)
        return close + 1

    def _statement(self, index, nesting):
        text = self._text(index)
        if text == '{':
            return self._block(index, nesting)
        if text == 'if':
            return self._if(index, nesting, 1 + nesting)
        if text in ('for', 'while', 'switch', 'catch', 'Q_FOREVER', 'forever'):
            self.complexity += 1 + nesting
            index += 1
            if self._text(index) == '(':
                index = self._group(index, nesting)
            return self._statement(index, nesting + 1)
        if text == 'do':
            self.complexity += 1 + nesting
            index = self._statement(index + 1, nesting + 1)
            return self._expression(self._group(index + 1, nesting), nesting)
        if text == 'goto':
            self.complexity += 1
        if text == 'try':
            return self._statement(index + 1, nesting)
        if text in ('case', 'default'):
            while self._text(index) != ':' and index < len(self.tokens):
                index = self._skip(index)
            return index + 1
        if text in ('struct', 'class', 'union') and self._is_local_class(index):
            while self._text(index) not in ('{', ';'):
                index += 1
            if self._text(index) == '{':
                complexity = self.complexity
                self._scope(index + 1, self.partner[index])
                self.complexity = complexity
                index = self.partner[index] + 1
        return self._expression(index, nesting)

    def _is_local_class(self, index):
        while self._text(index) not in ('{', ';', '(', '='):
            index += 1
        return self._text(index) == '{'

    def _if(self, index, nesting, cost):
        self.complexity += cost
        index += 1
        if self._text(index) == 'constexpr':
            index += 1
        index = self._statement(self._group(index, nesting), nesting + 1)
        if self._text(index) == 'else':
            if self._text(index + 1) == 'if':
                return self._if(index + 1, nesting, 1)
            self.complexity += 1
            return self._statement(index + 1, nesting + 1)
        return index

    def _group(self, index, nesting):
        """A bracketed group of expressions."""
        close = self.partner.get(index, len(self.tokens))
        self._expressions(index + 1, close, nesting)
        return close + 1

    def _expression(self, index, nesting):
        """Up to the semicolon, or the end of the block."""
        end = index
        while end < len(self.tokens) and self._text(end) not in (';', '}'):
            end = self._skip(end)
        self._expressions(index, end, nesting)
        return end + 1 if self._text(end) == ';' else max(end, index + 1)

    def _expressions(self, index, end, nesting):
        operator = ''
        while index < end:
            token = self.tokens[index]
            if token.text in ('&&', '||') and token.spaced:
                self.complexity += token.text != operator
                operator = token.text
            elif token.text in (',', ';', '?', ':', '='):
                operator = ''
                if token.text == '?':
                    self.complexity += 1 + nesting
                    nesting += 1
            elif token.text == '[' and self._is_lambda(index):
                index = self._lambda(index, nesting)
                continue
            elif token.text in OPEN:
                index = self._group(index, nesting)
                continue
            index += 1

    def _is_lambda(self, index):
        before = self._text(index - 1)
        if before in (')', ']') or WORD.match(before) and before not in ('return', 'co_return'):
            return False
        return self._text(self._skip(index)) in ('(', '{')

    def _lambda_body(self, index):
        while index < len(self.tokens) and self._text(index) not in ('{', ';'):
            index = self._skip(index)
        return index

    def _lambda(self, index, nesting):
        body = self._lambda_body(index)
        return self._block(body, nesting + 1) if self._text(body) == '{' else body


def main(arguments):
    everything = '--all' in arguments
    bad = False
    for path in (a for a in arguments if a != '--all'):
        with open(path, encoding='utf-8') as file:
            source = Source(file.read())
        for line, name, lines, complexity in source.functions:
            reasons = []
            if lines > MAX_LINES:
                reasons.append(f'{lines} lines (at most {MAX_LINES})')
            if complexity > MAX_COMPLEXITY:
                reasons.append(f'cognitive complexity {complexity} (at most {MAX_COMPLEXITY})')
            if everything:
                print(path, line, name, lines, complexity)
            elif reasons:
                print(f'{path}:{line}: {name}: {", ".join(reasons)}')
            bad = bad or bool(reasons)
    return 1 if bad and not everything else 0


if __name__ == '__main__':
    sys.exit(main(sys.argv[1:]))
