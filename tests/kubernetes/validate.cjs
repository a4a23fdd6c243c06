// Validates the objects of a JSON file with the models of their kinds. A broken object must be refused, too.
const fs = require('fs');

function modelOf(object) {
  return require(`kubernetes-models/${object.apiVersion}/${object.kind}`)[object.kind];
}

const objects = JSON.parse(fs.readFileSync(process.argv[2], 'utf8'));
let mistakes = 0;
for (const object of objects) {
  try {
    new (modelOf(object))(object).validate();
  } catch (error) {
    mistakes += 1;
    console.error(`${object.kind} ${object.metadata.name}: ${error.message}`);
  }
}

const broken = JSON.parse(JSON.stringify(objects.find((object) => object.kind === 'StatefulSet')));
broken.spec.replicas = 'many';
try {
  new (modelOf(broken))(broken).validate();
  console.error('a StatefulSet with "many" replicas was accepted');
  mistakes += 1;
} catch (error) {
  // As it must be.
}
console.log(`${objects.length} objects validated`);
process.exit(mistakes === 0 ? 0 : 1);
