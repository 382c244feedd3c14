// Whole conversations with the official clients, in every mode they have.
import assert from 'node:assert/strict';
import { symlinkSync } from 'node:fs';
import test from 'node:test';
import { Client } from '@modelcontextprotocol/client';
import { StdioClientTransport } from '@modelcontextprotocol/client/stdio';
import { Client as FormerClient } from '@modelcontextprotocol/sdk/client/index.js';
import { StdioClientTransport as FormerTransport } from '@modelcontextprotocol/sdk/client/stdio.js';
import { Place, call, checked, data, indexed, names } from './harness.mjs';

const INFO = { name: 'test', version: '1.0.0' };

const MODES = {
  'the former client': { former: true },
  ...Object.fromEntries(['2024-11-05', '2025-03-26', '2025-06-18', '2025-11-25'].map((version) => [
    `legacy ${version}`, { version, options: { supportedProtocolVersions: [version] } }])),
  automatic: { version: '2026-07-28', options: { versionNegotiation: { mode: 'auto' } } },
  pinned: { version: '2026-07-28', options: { versionNegotiation: { mode: { pin: '2026-07-28' } } } },
};

/// A connected client, closed when the test ends; every message was checked by then.
async function connect(place, server, { former, options } = MODES.automatic) {
  const client = former ? new FormerClient(INFO) : new Client(INFO, options);
  const transport = checked(former ? new FormerTransport(server) : new StdioClientTransport(server));
  place.closers.push(async () => {
    await client.close();
    assert.deepEqual(transport.faults, []);
  });
  await client.connect(transport);
  return client;
}

for (const [mode, setting] of Object.entries(MODES)) {
  test(`every action: ${mode}`, async (t) => {
    const place = new Place(t);
    place.repository('shop');
    const client = await connect(place, place.server(['shop']), setting);
    assert.equal(client.getServerVersion().name, 'tarnwick');
    assert.match(client.getInstructions(), /context/);
    if (setting.version && client.getNegotiatedProtocolVersion) {
      assert.equal(client.getNegotiatedProtocolVersion(), setting.version);
    }
    if (setting.version !== '2026-07-28') await client.ping();

    const { tools } = await client.listTools();
    assert.deepEqual(tools.map((tool) => tool.name), ['context']);
    assert.equal(tools[0].inputSchema.additionalProperties, false);
    assert.deepEqual(tools[0].annotations, {
      title: 'Code context', readOnlyHint: true, destructiveHint: false, idempotentHint: true, openWorldHint: false,
    });

    const { repositories: [status] } = await indexed(client);
    assert.equal(status.repository, 'shop');
    assert.equal(status.languages[0].language, 'python');

    const pack = data(await client.callTool(call({ action: 'task', task: 'Sum the prices in checkout_cart' })));
    assert.ok(names(pack).some((fqn) => fqn.endsWith('checkout_cart')), names(pack));
    assert.equal(pack.indexing_in_progress, false);
    assert.deepEqual(pack.tests, [{ file: 'tests/test_cart.py', for: 'shop/cart.py' }]);

    const fqn = names(pack).find((name) => name.endsWith('checkout_cart'));
    const symbol = data(await client.callTool(call({ action: 'symbol', fqn })));
    assert.match(symbol.body, /return 0/);
    assert.equal(symbol.body_truncated, false);
    assert.deepEqual(symbol.tests, ['tests/test_cart.py']);
    assert.ok(symbol.references.length > 0);
    await assert.rejects(client.callTool({ name: 'other', arguments: {} }), /Unknown tool: other/);
  });
}

test('bad arguments come back as results that help', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  const client = await connect(place, place.server(['shop']));
  await indexed(client);
  const cases = [
    [{ action: 'task' }, /"task" is missing/],
    [{ action: 'task', task: 'x', component: 'shap' }, /Unknown component: shap.*shop/],
    [{ action: 'task', task: 'x', seed: ['a.b.checkout_cart'] }, /Unknown symbol: .*Near names: .*checkout_cart/],
    [{ action: 'symbol', fqn: 'nothing_like_it' }, /Unknown symbol: nothing_like_it\. Take/],
    [{ action: 'status', repository: '/etc' }, /Unknown repository: \/etc\. Served: shop/],
  ];
  for (const [args, text] of cases) {
    const result = await client.callTool(call(args));
    assert.equal(result.isError, true, JSON.stringify(args));
    assert.match(result.content[0].text, text);
  }
  const pack = data(await client.callTool(call({ action: 'task', task: 'cart', deep: ['no.where'] })));
  assert.deepEqual(pack.notes, ['deep: unknown symbol no.where']);
});

test('arguments of a task reach the pack', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  const client = await connect(place, place.server(['shop']));
  await indexed(client);
  const task = async (more) => data(await client.callTool(call({ action: 'task', task: 'cart', ...more })));
  const [all, classes] = [await task(), await task({ prefer: ['class'], snippets: true, budget: 4000 })];
  assert.ok(all.symbols.every((symbol) => !symbol.snippet));
  assert.equal(classes.symbols[0].kind, 'class');
  assert.match(classes.symbols[0].snippet, /class Cart/);
  const fqn = names(all).find((name) => name.endsWith('add_item'));
  const [deep] = (await task({ seed: [fqn], deep: [fqn] })).symbols;
  assert.equal(deep.fqn, fqn);
  assert.match(deep.snippet, /self\.items/, 'a body that is asked for needs no snippets');
  assert.ok(names(await task({ component: 'shop', wide: true })).length > 0);
});

test('an overload is chosen by its place', async (t) => {
  const place = new Place(t);
  const two = 'int area(int side) {\n  return side * side;\n}\n\nint area(int width, int height) {\n  return width * height;\n}\n';
  place.repository('shapes', { 'area.cpp': two, 'old.cpp': 'int area() {\n  return 0;\n}\n' });
  const client = await connect(place, place.server(['shapes']));
  await indexed(client);
  const symbol = (more) => client.callTool(call({ action: 'symbol', fqn: 'area', ...more }));
  for (const [more, body] of [[{ line: 5 }, /height;/], [{ file: 'area.cpp' }, /side;/], [{ file: 'old.cpp', line: 1 }, /0;/]]) {
    const { body: shown, others } = data(await symbol(more));
    assert.match(shown, body);
    assert.equal(others.length, 2);
  }
  assert.match((await symbol({ file: 'old.cpp', line: 5 })).content[0].text, /not there, but at: .*area\.cpp:5/);
});

test('structured content is the same as the text and fits its schema', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  for (const setting of [MODES.automatic, MODES['legacy 2025-06-18'], MODES['the former client']]) {
    const client = await connect(place, place.server(['shop'], '--structured'), setting);
    const { tools: [tool] } = await client.listTools();
    assert.equal(tool.outputSchema.type, 'object');
    await indexed(client);
    const task = { action: 'task', task: 'checkout_cart of a Cart', snippets: true, budget: 8000 };
    const pack = await client.callTool(call(task));
    const symbol = { action: 'symbol', fqn: names(data(pack))[0] };
    for (const result of [pack, await client.callTool(call(symbol)), await client.callTool(call({ action: 'status' }))]) {
      assert.deepEqual(result.structuredContent, data(result));
    }
    assert.equal((await client.callTool(call({ action: 'symbol', fqn: 'none' }))).isError, true);
  }
});

test('several repositories are told apart', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  place.repository('bank', { 'bank.py': 'def open_account():\n    return 1\n' });
  symlinkSync(place.path('bank'), place.path('linked'));
  const client = await connect(place, place.server(['shop', 'bank', 'linked']));
  const status = await indexed(client);
  assert.deepEqual(status.repositories.map((repository) => repository.repository), ['shop', 'bank']);
  const question = { action: 'task', task: 'open_account or checkout_cart' };
  const unnamed = await client.callTool(call(question));
  assert.equal(unnamed.isError, true);
  assert.match(unnamed.content[0].text, /shop, bank/);
  for (const repository of ['bank', place.path('bank'), place.path('linked')]) {
    const pack = data(await client.callTool(call({ ...question, repository })));
    assert.deepEqual(names(pack).map((fqn) => fqn.split('.').at(-1)), ['open_account']);
  }
});

test('calls can be cancelled and tell their progress', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  for (const setting of [MODES.pinned, MODES['legacy 2025-11-25']]) {
    const client = await connect(place, place.server(['shop']), setting);
    const stop = new AbortController();
    const cancelled = client.callTool(call({ action: 'task', task: 'cart' }), { signal: stop.signal });
    stop.abort('enough');
    await assert.rejects(cancelled);
    let progress = [];
    // The client drops progress that it reads together with the answer.
    for (let tries = 0; progress.length === 0 && tries < 100; ++tries) {
      progress = [];
      await client.callTool(call({ action: 'task', task: 'cart' }), { onprogress: (step) => progress.push(step) });
    }
    assert.ok(progress.length > 0);
    assert.ok(progress.every((step, i) => i === 0 || step.progress > progress[i - 1].progress));
  }
});

test('a subscription is acknowledged and can be closed', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  const client = await connect(place, place.server(['shop']), MODES.pinned);
  const subscription = await client.listen({ toolsListChanged: true });
  assert.deepEqual(subscription.honoredFilter, {});
  await subscription.close();
  assert.equal(await subscription.closed, 'local');
});
