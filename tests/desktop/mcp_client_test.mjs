// The official client of the Model Context Protocol against the server, on a desktop with a calculator; in both revisions.
// It is installed by script/bootstrap in the folder that TAVIK_MCP_CLIENT names.

import assert from "node:assert/strict";
import {after, before, describe, test} from "node:test";
import {join} from "node:path";
import {pathToFileURL} from "node:url";

const module = file =>
  import(pathToFileURL(join(process.env.TAVIK_MCP_CLIENT, "node_modules/@modelcontextprotocol/client/dist", file)));
const [{Client}, {StdioClientTransport}] = await Promise.all(["index.mjs", "stdio.mjs"].map(module)).catch(() => {
  console.log("desktop: the client of the Model Context Protocol is not installed");
  process.exit(0);
});

// Nothing of the desktop: the server has to find it by itself.
const environment = {PATH: process.env.PATH};
const capture = (client, given, options) =>
  client.callTool({name: "local_perception_capture", arguments: given}, options);
const textOf = result => result.content[0].text;

for (const [revision, mode] of [["2025-11-25", "legacy"], ["2026-07-28", {pin: "2026-07-28"}]]) {
  describe(revision, () => {
    const client = new Client({name: "test", version: "1"}, {versionNegotiation: {mode}});
    before(() => client.connect(new StdioClientTransport({
      command: process.env.TAVIK_PERCEPTION_MCP, env: environment, stderr: "ignore",
    })));
    after(() => client.close());

    test("three tools that only look", async () => {
      const {tools} = await client.listTools();
      assert.deepEqual(tools.map(tool => tool.name), ["local_perception_capture", "list_applications", "explain_setup"]);
      for (const {annotations} of tools) assert.ok(annotations.readOnlyHint && !annotations.destructiveHint);
    });

    test("a tree and a picture, two at once", async () => {
      const [tree, picture] = await Promise.all([
        capture(client, {app_name: "galculator", find: "sqrt", include_image: false}),
        capture(client, {app_name: "galculator", level: "read", places: "centre"}),
      ]);
      assert.match(textOf(tree), /^ +CheckBox "sqrt"/m);
      assert.doesNotMatch(textOf(tree), /"AC"/);
      assert.equal(tree.content.length, 1);
      const {type, mimeType, data} = picture.content[1];
      assert.deepEqual([type, mimeType], ["image", "image/jpeg"]);
      assert.deepEqual([...Buffer.from(data, "base64").subarray(0, 2)], [0xff, 0xd8]);
      const [, width, height] = textOf(picture).match(/(\d+) x (\d+) pixels/);
      const [, x, y] = textOf(picture).match(/^Window .*@(\d+),(\d+)$/m);
      assert.ok(Math.abs(2 * x - width) <= 1 && Math.abs(2 * y - height) <= 1, "the window's centre is the picture's");
    });

    test("what is wrong is told so that it can be mended", async () => {
      const result = await capture(client, {app_name: 7});
      assert.ok(result.isError);
      assert.match(textOf(result), /app_name: expected a string/);
      await assert.rejects(client.callTool({name: "shell", arguments: {}}), /-32602|no tool/);
    });

    test("what runs, and what works", async () => {
      assert.match(textOf(await client.callTool({name: "list_applications"})), /app_bundle_id "galculator"/);
      assert.match(textOf(await client.callTool({name: "explain_setup"})), /started without a display/);
    });

    test("a call that is cancelled is no end", async () => {
      const stop = new AbortController();
      const calls = Array.from({length: 6}, () => capture(client, {app_name: "galculator"}, {signal: stop.signal}));
      stop.abort();
      for (const outcome of await Promise.allSettled(calls)) assert.equal(outcome.status, "rejected");
      assert.ok(!(await capture(client, {app_name: "galculator", include_image: false})).isError);
    });
  });
}
