// Where previews are read from. Their quality is an option of the repository, and the program gives one address for
// all qualities: what the browser has of another quality must not be taken for it, so the address says which one is
// meant. The program passes over what it does not know in an address.
import { previewAddress } from '../api/client.ts';
import { withQuery } from '../api/request.ts';
import type { OptionGroup } from '../api/types.ts';
import { concernsPreviews } from '../lib/filters.ts';
import { repositories } from './repositories.svelte.ts';

// Of repositories whose options are not those at hand.
const known = new Map<string, string>();

// The values of the options that filter nothing, on which what a preview looks like may depend.
function qualityIn(groups: readonly OptionGroup[]): string {
  return groups
    .flatMap((group) => group.options)
    .filter(concernsPreviews)
    .map((option) => option.value)
    .join(' ');
}

function qualityOf(repository: string): string {
  if (repository === repositories.groupsOf) {
    known.set(repository, qualityIn(repositories.groups));
  }
  return known.get(repository) ?? '';
}

// The preview as it is wanted now; changes when the quality does.
export function previewOf(repository: string, clip: string): string {
  const quality = qualityOf(repository);
  return withQuery(previewAddress(repository, clip), quality === '' ? {} : { quality });
}

// The same for an address that has no quality yet.
export function withQuality(address: string): string {
  const [, , , repository = ''] = address.split('/');
  const quality = qualityOf(decodeURIComponent(repository));
  return address.includes('?') || quality === '' ? address : withQuery(address, { quality });
}
