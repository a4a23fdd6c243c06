// Drives the agent with a controller library that was written by others.
//   node controller.js PORT
const assert = require('node:assert');
const { execFileSync } = require('node:child_process');
const connect = require('usp-js').default;

const [port, consoleProgram, state] = process.argv.slice(2);
const agent = 'os::025176-QW3-000001';
const onBoard = (...words) => execFileSync(consoleProgram, ['--state', state, ...words], { encoding: 'utf8' });
// A scan of three radios takes a quarter of a minute of the board's time, which is real here.
const within = (promise, what) =>
  Promise.race([promise, new Promise((_, no) => setTimeout(() => no(new Error(`${what}: nothing came`)), 60000))]);

const steps = {
  async 'supported protocol'(usp) {
    const answer = await usp.supportedProto('1.4');
    assert.match(JSON.stringify(answer), /1\.4/);
  },
  async 'get a parameter'(usp) {
    assert.equal(await usp.get('Device.LocalAgent.EndpointID'), agent);
  },
  async 'get an object'(usp) {
    const radio = await usp.get('Device.WiFi.Radio.1.');
    assert.ok(Object.keys(radio).length > 20, JSON.stringify(radio));
  },
  async 'search'(usp) {
    const found = await usp.get('Device.WiFi.Radio.[Channel>0].Channel');
    assert.ok([].concat(found).length >= 3, JSON.stringify(found));
  },
  async 'instances'(usp) {
    const found = await usp.instances('Device.WiFi.Radio.');
    assert.match(JSON.stringify(found), /Device\.WiFi\.Radio\.3\./);
  },
  async 'supported data model'(usp) {
    const model = await usp.supportedDM('Device.WiFi.');
    assert.match(JSON.stringify(model), /Device\.WiFi\.Radio\.\{i\}\./);
  },
  async 'set'(usp) {
    await usp.set('Device.WiFi.SSID.1.', { SSID: { value: 'independent', required: true }, allowPartial: false });
    assert.equal(await usp.get('Device.WiFi.SSID.1.SSID'), 'independent');
  },
  async 'set what is refused'(usp) {
    await assert.rejects(
      usp.set('Device.WiFi.SSID.1.', { NoSuchThing: { value: '1', required: true }, allowPartial: false }));
  },
  async 'add and delete'(usp) {
    await usp.add('Device.LocalAgent.Subscription.', {
      Enable: 'true', ID: 'by-hand', NotifType: 'ValueChange', ReferenceList: 'Device.DeviceInfo.ProvisioningCode' });
    const path = 'Device.LocalAgent.Subscription.[ID=="by-hand"].';
    assert.ok(JSON.stringify(await usp.get(path + 'ID')).includes('by-hand'));
    await usp.del(path);
    assert.ok(!JSON.stringify(await usp.get(path + 'ID')).includes('by-hand'));
  },
  async 'value change'(usp) {
    let seen;
    const change = new Promise(yes => { seen = yes; });
    const stop = await usp.subscribe({ id: 'vc', notif: 'ValueChange', reference: 'Device.WiFi.SSID.1.SSID' }, seen);
    await usp.set('Device.WiFi.SSID.1.', { SSID: 'changed' });
    assert.match(JSON.stringify(await within(change, 'ValueChange')), /changed/);
    await stop();
  },
  async 'object creation'(usp) {
    let seen;
    const creation = new Promise(yes => { seen = yes; });
    const stop = await usp.subscribe(
      { id: 'oc', notif: 'ObjectCreation', reference: 'Device.WiFi.AccessPoint.1.AssociatedDevice.' }, seen);
    onBoard('station', 'join', '02:5a:00:00:77:01', '1');
    assert.match(JSON.stringify(await within(creation, 'ObjectCreation')), /02:5a:00:00:77:01/i);
    await stop();
  },
  async 'operate'(usp) {
    const [scan, done] = await usp.operate('Device.WiFi.NeighboringWiFiDiagnostic()', { commandKey: 'scan' });
    assert.match(JSON.stringify(await within(scan({}), 'OperationComplete')), /Complete/);
    await done();
  },
};

(async () => {
  const usp = await connect(
    { host: '127.0.0.1', port: Number(port), protocol: 'mqtt', protocolVersion: 5, toId: agent },
    { onError: () => {} });
  const bounded = usp.options({ timeout: 15000 });
  let failed = 0;
  for (const [name, step] of Object.entries(steps)) {
    try {
      await step(Object.assign(Object.create(bounded), { subscribe: usp.subscribe, operate: usp.operate }));
      console.log(`ok   ${name}`);
    } catch (error) {
      failed += 1;
      console.log(`FAIL ${name}: ${error.stack || JSON.stringify(error)}`);
    }
  }
  await usp.disconnect();
  process.exit(failed ? 1 : 0);
})();
