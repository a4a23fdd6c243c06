// Validates the objects of a JSON file with the models of their kinds. A broken object must be refused, too.
const fs = require('fs');

async function modelOf(object) {
  const models = await import(`kubernetes-models/${object.apiVersion}/${object.kind}`);
  return models[object.kind];
}

async function main() {
  const objects = JSON.parse(fs.readFileSync(process.argv[2], 'utf8'));
  let mistakes = 0;
  for (const object of objects) {
    try {
      const Model = await modelOf(object);
      new Model(object).validate();
    } catch (error) {
      mistakes += 1;
      console.error(`${object.kind} ${object.metadata.name}: ${error.message}`);
    }
  }

  const broken = JSON.parse(JSON.stringify(objects.find((object) => object.kind === 'StatefulSet')));
  broken.spec.replicas = 'many';
  const Model = await modelOf(broken);
  let refused = false;
  try {
    new Model(broken).validate();
  } catch (error) {
    refused = /replicas/.test(error.message);
  }
  if (!refused) {
    console.error('a StatefulSet with "many" replicas was accepted');
    mistakes += 1;
  }
  console.log(`${objects.length} objects validated, ${mistakes} mistakes`);
  return mistakes === 0 ? 0 : 1;
}

main().then((status) => process.exit(status));
