// The filters that are in force, from the options as the repository lists them.
import type { OptionGroup, SearchOption } from '../api/types.ts';

export interface ActiveFilter {
  group: number;
  index: number;
  legend: string;
  text: string; // of the chosen value; empty for a boolean, whose legend says all
  initial: string; // the value that takes the filter away
}

export function isFiltering(option: SearchOption): boolean {
  return option.active && option.initial !== null && option.value !== option.initial;
}

// Whether it has a place among the filters: what only concerns previews has its place beside them too.
export function isShown(option: SearchOption): boolean {
  return !option.hidden;
}

// On which no results are known to depend, such as the quality of previews.
export function concernsPreviews(option: SearchOption): boolean {
  return option.type === 'boolean' && option.initial === null;
}

export function activeFilters(groups: readonly OptionGroup[]): ActiveFilter[] {
  return groups.flatMap((group, groupIndex) =>
    group.options.flatMap((option, index) => {
      if (!isFiltering(option) || option.initial === null) {
        return [];
      }
      const choice = option.choices?.find((other) => other.value === option.value);
      const text = option.type === 'boolean' ? '' : (choice?.text ?? option.value);
      return [{ group: groupIndex, index, legend: option.legend, text, initial: option.initial }];
    }),
  );
}

const yes = new Set(['true', '1', 'yes']);

export function isOn(value: string): boolean {
  return yes.has(value.toLowerCase());
}

// The opposite of a boolean's text, in the same words.
export function toggled(value: string): string {
  return ['1', '0'].includes(value) ? (value === '1' ? '0' : '1') : isOn(value) ? 'false' : 'true';
}
