// Says where a PowerShell script is not well-formed: node parse_powershell.js NODE_MODULES SCRIPT
const fs = require("fs");
const [, , modules, script] = process.argv;
const { Parser, Language } = require(modules + "/web-tree-sitter/web-tree-sitter.cjs");

function problems(node) {
    if (node.isError || node.isMissing) return [`line ${node.startPosition.row + 1}: ${node.text.split("\n")[0]}`];
    return node.hasError ? node.children.flatMap(problems) : [];
}

(async () => {
    await Parser.init();
    const parser = new Parser();
    parser.setLanguage(await Language.load(modules + "/tree-sitter-powershell/tree-sitter-powershell.wasm"));
    const found = problems(parser.parse(fs.readFileSync(script, "utf8")).rootNode);
    found.forEach((problem) => console.log(problem));
    process.exit(found.length ? 1 : 0);
})();
